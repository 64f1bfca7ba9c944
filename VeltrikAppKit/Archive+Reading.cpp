#include <sys/stat.h>

#include <algorithm>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileManager.h"
#include "VeltrikAppKit/ArchiveExtraction.h"
#include "VeltrikAppKit/ArchiveState.h"
#include "VeltrikAppKit/Data+CRC32.h"

namespace veltrik {

namespace {

using platform::CocoaError;
using platform::DataView;

/// No file system takes longer link targets, so a longer one is a lie or an attack.
constexpr std::size_t kLongestLinkTarget = 65535;
/// Bytes that the kernel copies at a time when nobody watches.
constexpr std::size_t kKernelStep = 1 << 20;

CompressionMethod methodOf(const Entry& entry) {
  const std::uint16_t method = entry.localFileHeader().compressionMethod;
  if (method != static_cast<std::uint16_t>(CompressionMethod::none) &&
      method != static_cast<std::uint16_t>(CompressionMethod::deflate)) {
    throw ArchiveError(ArchiveError::Case::invalidCompressionMethod, "method " + std::to_string(method));
  }
  return static_cast<CompressionMethod>(method);
}

void complete(platform::Progress* progress, std::int64_t units) {
  if (progress != nullptr) progress->setCompletedUnitCount(units);
}

}  // namespace

platform::FileAttributes attributesOf(const Entry& entry, const ExtractOptions& options) {
  platform::FileAttributes attributes = entry.fileAttributes();
  if (options.maskSpecialPermissions) attributes.posixPermissions &= static_cast<std::uint16_t>(~(S_ISUID | S_ISGID));
  return attributes;
}

/// One extraction from an open archive.
class ArchiveExtraction::Source {
 public:
  Source(EntryDataReader& reader, const Entry& entry, const ExtractOptions& options)
      : reader_(reader), entry_(entry), options_(options), chunkSize_(chunkSize(options.bufferSize)) {}

  std::uint32_t run(const ByteConsumer& consumer) {
    switch (entry_.type()) {
      case Entry::EntryType::directory:
        consumer({});
        complete(options_.progress, 1);
        return 0;
      case Entry::EntryType::symlink:
        return readLink(consumer);
      default:
        return methodOf(entry_) == CompressionMethod::none ? readStored(consumer) : readDeflated(watched(consumer));
    }
  }

 private:
  /// Tells the progress of every block, and stops before one when it is cancelled.
  ByteConsumer watched(const ByteConsumer& consumer) const {
    return [this, &consumer](DataView block) { deliver(block, consumer); };
  }

  void deliver(DataView block, const ByteConsumer& consumer) const {
    throwIfCancelled(options_.progress);
    consumer(block);
    if (options_.progress != nullptr) options_.progress->addCompletedUnitCount(static_cast<std::int64_t>(block.size()));
  }

  std::uint32_t readStored(const ByteConsumer& consumer) const {
    const std::uint64_t total = entry_.centralDirectoryStructure().uncompressedSize;
    std::uint32_t crc = 0;
    for (std::uint64_t position = 0; position < total;) {
      const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(total - position, chunkSize_));
      const DataView block = reader_.window.bytes(entry_.dataOffset() + position, wanted);
      if (block.empty()) break;
      deliver(block, consumer);
      if (!options_.skipCRC32) crc = crc32(block, crc);
      position += wanted;
    }
    return crc;
  }

  std::uint32_t readDeflated(const ByteConsumer& consumer) const {
    const auto provider = [this](std::int64_t position, std::span<std::byte> destination) {
      const DataView block =
          reader_.window.bytes(entry_.dataOffset() + static_cast<std::uint64_t>(position), destination.size());
      std::copy(block.begin(), block.end(), destination.begin());
      return block.size();
    };
    return reader_.decompressor.run(entry_.centralDirectoryStructure().compressedSize, chunkSize_, options_.skipCRC32,
                                    provider, consumer);
  }

  /// A target is short, so it is collected and handed over at once. Some writers deflate it.
  std::uint32_t readLink(const ByteConsumer& consumer) const {
    platform::Data target;
    const auto collect = [&](DataView block) {
      if (block.size() > kLongestLinkTarget - target.size()) {
        throw ArchiveError(ArchiveError::Case::invalidEntryPath, "the link's target is too long");
      }
      platform::append(target, block);
    };
    if (methodOf(entry_) == CompressionMethod::deflate) {
      readDeflated(collect);
    } else {
      const auto size = static_cast<std::size_t>(entry_.compressedSize());
      collect(reader_.window.bytes(entry_.dataOffset(), std::min(size, kLongestLinkTarget + 1)));
    }
    consumer(target);
    complete(options_.progress, entry_.uncompressedSize());
    return crc32(target);
  }

  EntryDataReader& reader_;
  const Entry& entry_;
  const ExtractOptions& options_;
  std::size_t chunkSize_;
};

EntryReader ArchiveExtraction::entryReader(const Archive& archive) {
  return EntryReader(*archive.state_->stream);
}

EntryDataReader ArchiveExtraction::dataReader(const Archive& archive) {
  return EntryDataReader(*archive.state_->stream);
}

std::uint32_t ArchiveExtraction::toConsumer(const ByteConsumer& consumer) const {
  return toConsumer(consumer, archive_.state_->reader);
}

std::uint32_t ArchiveExtraction::toConsumer(const ByteConsumer& consumer, EntryDataReader& reader) const {
  if (options_.progress != nullptr) options_.progress->setTotalUnitCount(archive_.totalUnitCountForReading(entry_));
  return Source(reader, entry_, options_).run(consumer);
}

std::uint32_t ArchiveExtraction::toFile(int file) const {
  const bool isUnseen = options_.skipCRC32 && methodOf(entry_) == CompressionMethod::none;
  if (!isUnseen || archive_.state_->stream->descriptor() < 0) {
    return toConsumer([file](DataView block) { writeAll(file, block); });
  }
  platform::Progress* progress = options_.progress;
  if (progress != nullptr) progress->setTotalUnitCount(archive_.totalUnitCountForReading(entry_));
  const CopyTarget target = {file, 0,
                             [file](std::uint64_t offset, DataView block) { writeAllAt(file, offset, block); }};
  copyBytes(*archive_.state_->stream, entry_.dataOffset(), target, entry_.centralDirectoryStructure().uncompressedSize,
            progress != nullptr ? chunkSize(options_.bufferSize) : kKernelStep, [progress](std::uint64_t copied) {
              throwIfCancelled(progress);
              if (progress != nullptr) progress->addCompletedUnitCount(static_cast<std::int64_t>(copied));
            });
  return 0;
}

std::uint32_t ArchiveExtraction::to(const PlaceOpener& open) const {
  const platform::FileAttributes attributes = attributesOf(entry_, options_);
  switch (entry_.type()) {
    case Entry::EntryType::directory:
      return toConsumer([&](DataView) { makeDirectory(open(), attributes.posixPermissions); });
    case Entry::EntryType::symlink:
      return toConsumer([&](DataView block) {
        const std::string target(platform::textOf(block));
        if (!platform::isValidUTF8(target) || target.find('\0') != std::string::npos) {
          throw ArchiveError(ArchiveError::Case::invalidEntryPath, "the link's target is no text");
        }
        const ItemPlace place = open();
        requireNothing(place);
        makeLink(place, target, attributes);
      });
    default: {
      methodOf(entry_);  // Throws before there is a file.
      const ItemPlace place = open();
      requireNothing(place);
      std::uint32_t crc = 0;
      makeFile(place, attributes, [&](int file) { crc = toFile(file); });
      return crc;
    }
  }
}

std::uint32_t Archive::extract(const Entry& entry, const ByteConsumer& consumer, const ExtractOptions& options) const {
  return withContext(entry.path(), url(),
                     [&] { return ArchiveExtraction(*this, entry, options).toConsumer(consumer); });
}

std::uint32_t Archive::extract(const Entry& entry, const platform::URL& destination,
                               const ExtractOptions& options) const {
  return withContext(entry.path(), url(), [&] {
    const platform::FileManager files;
    if (entry.type() != Entry::EntryType::directory && files.isReachableItem(destination)) {
      throw CocoaError::writing(EEXIST, destination.path());
    }
    platform::FileDescriptor parent;
    const auto open = [&] {
      files.createParentDirectories(destination);
      parent = openDirectory(destination.deletingLastPathComponent());
      return ItemPlace{parent.get(), destination.lastPathComponent(), destination.path()};
    };
    const std::uint32_t crc = ArchiveExtraction(*this, entry, options).to(open);
    if (entry.type() == Entry::EntryType::directory) setDirectoryAttributes(open(), attributesOf(entry, options));
    return crc;
  });
}

}  // namespace veltrik
