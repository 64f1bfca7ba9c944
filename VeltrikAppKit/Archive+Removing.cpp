#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/Foundation/CocoaError.h"
#include "VeltrikAppKit/ArchiveState.h"
#include "VeltrikAppKit/ReplacementFile.h"

namespace veltrik {

namespace {

using platform::CocoaError;
using platform::URL;

constexpr std::size_t kUnwatchedStep = 1 << 20;
constexpr std::size_t kDirectoryWindow = 65536;
constexpr std::uint64_t kUnsignedDescriptorSize = 12;

[[noreturn]] void refuse(ArchiveError::Case code, const char* cause) {
  throw ArchiveError(code, cause);
}

/// The file itself, not a link to it, which would be replaced by a file.
std::string realPath(const URL& url) {
  const std::unique_ptr<char, decltype(&std::free)> path(realpath(url.path().c_str(), nullptr), std::free);
  if (!path) throw CocoaError::writing(errno, url.path());
  return path.get();
}

/// Gives the new file the rights and, where the system lets it, the owner of the old one.
void adoptAttributes(const ArchiveStream& replacement, const ArchiveStream& original) {
  struct stat status {};
  if (fstat(original.descriptor(), &status) != 0) throw DataError(DataError::Case::unreadableFile, errno);
  const bool isOwned = fchown(replacement.descriptor(), status.st_uid, status.st_gid) == 0;
  // Whoever may not give the file away must not lend the owner's special rights to another user either.
  const mode_t mode = status.st_mode & (isOwned ? 07777 : 0777);
  if (fchmod(replacement.descriptor(), mode) != 0) throw DataError(DataError::Case::unwritableFile, errno);
}

}  // namespace

/// One removal, of one or more entries: what stays is copied into a new archive, which then takes the place of the old
/// one.
class ArchiveRemoval {
 public:
  ArchiveRemoval(Archive& archive, std::span<const Entry> entries, const RemoveOptions& options)
      : state_(*archive.state_), options_(options) {
    auto staying = static_cast<std::int64_t>(state_.endRecord.offsetToStartOfCentralDirectory);
    for (const Entry& entry : entries) {
      staying -= static_cast<std::int64_t>(entry.localRecordLength());
      wanted_.emplace(entry.centralDirectoryStructure().relativeOffsetOfLocalHeader, &entry);
    }
    if (options.progress != nullptr) options.progress->setTotalUnitCount(std::max<std::int64_t>(staying, 0));
  }

  void run() {
    survey();
    if (state_.stream->memoryFile() != nullptr) {
      adopt(rebuilt(ArchiveStream::openMemory(MemoryFile::make({}), "wb+")));
    } else {
      replaceFile();
    }
    // Archives with gaps copy less than was expected.
    if (options_.progress != nullptr) {
      options_.progress->setCompletedUnitCount(options_.progress->totalUnitCount());
    }
  }

 private:
  /// An entry's record in the archive, one after the other as the central directory lists them.
  struct Record {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    bool isRemoved = false;
  };
  /// A run of bytes that stays.
  struct Run {
    std::uint64_t start = 0;
    std::uint64_t length = 0;
  };
  struct Rebuilt {
    std::unique_ptr<ArchiveStream> stream;
    Archive::EndOfCentralDirectoryRecord endRecord;
    std::uint64_t endRecordOffset = 0;
  };

  static std::uint64_t recordLength(const Entry& entry);
  /// Looks at every entry before anything is done, and refuses what could not be done without loss.
  void survey();
  /// Writes everything but what is removed.
  Rebuilt rebuilt(std::unique_ptr<ArchiveStream> target) const;
  void copyRun(const Run& run, ArchiveStream& target, std::uint64_t position) const;
  void replaceFile();
  void adopt(Rebuilt replacement);

  ArchiveState& state_;
  const RemoveOptions& options_;
  std::map<std::uint32_t, const Entry*> wanted_;  ///< what to remove, by the place of its record
  std::vector<Record> records_;
  std::uint64_t prefixLength_ = 0;  ///< what stands before the first record, such as a program that unpacks
};

/// The whole record by what the central directory says: where a descriptor is missing or lies, that still covers the
/// data.
std::uint64_t ArchiveRemoval::recordLength(const Entry& entry) {
  std::uint64_t dataSize = entry.centralDirectoryStructure().storedSize();
  if (entry.type() == Entry::EntryType::symlink) {
    dataSize = std::max<std::uint64_t>(dataSize, entry.localFileHeader().compressedSize);
  }
  const auto& descriptor = entry.dataDescriptor();
  const std::uint64_t descriptorSize = !descriptor                ? 0
                                       : descriptor->hasSignature ? Entry::DataDescriptor::fixedSize
                                                                  : kUnsignedDescriptorSize;
  return entry.localFileHeader().size() + dataSize + descriptorSize;
}

void ArchiveRemoval::survey() {
  const std::uint64_t directoryStart = state_.endRecord.offsetToStartOfCentralDirectory;
  std::uint64_t firstRecord = directoryStart;
  std::uint64_t recordBytes = 0;
  std::size_t removed = 0;
  bool isInside = true;
  EntryReader reader(*state_.stream);
  forEachEntry(reader, state_.endRecord, [&](const Entry& entry, std::uint64_t) {
    const std::uint32_t offset = entry.centralDirectoryStructure().relativeOffsetOfLocalHeader;
    const auto wanted = wanted_.find(offset);
    const Record record = {offset, recordLength(entry), wanted != wanted_.end() && entry == *wanted->second};
    records_.push_back(record);
    isInside = isInside && record.offset + record.length <= directoryStart;
    firstRecord = std::min(firstRecord, record.offset);
    recordBytes += record.length;
    if (record.isRemoved) ++removed;
    return true;
  });
  if (removed < wanted_.size()) refuse(ArchiveError::Case::invalidEntryPath, "the archive has no such entry");
  if (records_.size() != state_.endRecord.totalNumberOfEntriesInCentralDirectory) {
    refuse(ArchiveError::Case::unwritableArchive, "some of the archive's entries can't be read and would be lost");
  }
  if (!isInside || recordBytes > directoryStart - firstRecord) {
    refuse(ArchiveError::Case::unwritableArchive, "the archive's entries overlap");
  }
  prefixLength_ = firstRecord;
}

void ArchiveRemoval::copyRun(const Run& run, ArchiveStream& target, std::uint64_t position) const {
  if (run.length == 0) return;
  const CopyTarget place = {target.descriptor(), position,
                            [&](std::uint64_t offset, platform::DataView bytes) { target.writeAt(offset, bytes); }};
  platform::Progress* progress = options_.progress;
  const std::size_t step = progress != nullptr ? chunkSize(options_.bufferSize) : kUnwatchedStep;
  const auto copied = copyBytes(*state_.stream, run.start, place, run.length, step, [progress](std::uint64_t count) {
    throwIfCancelled(progress);
    if (progress != nullptr) progress->addCompletedUnitCount(static_cast<std::int64_t>(count));
  });
  if (copied != run.length) {
    throw DataError(DataError::Case::unreadableFile, "the archive ends before its last entry does");
  }
}

ArchiveRemoval::Rebuilt ArchiveRemoval::rebuilt(std::unique_ptr<ArchiveStream> target) const {
  if (!target) refuse(ArchiveError::Case::unwritableArchive, "the new archive can't be made");
  platform::Data directory;
  std::uint64_t position = 0;
  Run run = {0, prefixLength_};
  std::uint16_t kept = 0;
  ReadWindow window(*state_.stream, kDirectoryWindow);
  std::uint64_t directoryPosition = state_.endRecord.offsetToStartOfCentralDirectory;
  Entry::CentralDirectoryStructure structure;
  for (const Record& record : records_) {
    // The survey saw it, but reading may fail at any time.
    if (!readRecord(window, directoryPosition, structure)) {
      throw DataError(DataError::Case::unreadableFile, "an entry can't be read any more");
    }
    directoryPosition += structure.size();
    if (record.isRemoved) continue;
    // Records that follow each other are copied together.
    if (record.offset != run.start + run.length) {
      copyRun(run, *target, position);
      position += run.length;
      run = {record.offset, 0};
    }
    structure.relativeOffsetOfLocalHeader = static_cast<std::uint32_t>(position + run.length);
    run.length += record.length;
    platform::append(directory, structure.data());
    ++kept;
  }
  copyRun(run, *target, position);
  position += run.length;

  Rebuilt result{std::move(target), state_.endRecord, position + directory.size()};
  result.endRecord.totalNumberOfEntriesInCentralDirectory = kept;
  result.endRecord.totalNumberOfEntriesOnDisk = kept;
  result.endRecord.sizeOfCentralDirectory = static_cast<std::uint32_t>(directory.size());
  result.endRecord.offsetToStartOfCentralDirectory = static_cast<std::uint32_t>(position);
  platform::append(directory, result.endRecord.data());
  result.stream->writeAt(position, directory);
  return result;
}

void ArchiveRemoval::replaceFile() {
  const std::string path = realPath(state_.url);
  std::optional<ReplacementFile> place;
  try {
    place.emplace(path);
  } catch (const CocoaError& error) {
    throw ArchiveError(ArchiveError::Case::unwritableArchive, error.what());
  }
  Rebuilt replacement = rebuilt(ArchiveStream::adopt(place->release()));
  adoptAttributes(*replacement.stream, *state_.stream);
  const int file = replacement.stream->descriptor();
  // On disk before it takes the name: a power cut must not leave the name to a file without its bytes.
  if (fsync(file) != 0) throw DataError(DataError::Case::unwritableFile, errno);
  place->takePlace(file);
  adopt(std::move(replacement));
}

void ArchiveRemoval::adopt(Rebuilt replacement) {
  state_.endRecord = std::move(replacement.endRecord);
  state_.endRecordOffset = replacement.endRecordOffset;
  state_.tail.reset();
  // The new file was opened before it got the archive's name, so that nothing can fail now.
  state_.streamChanged(std::move(replacement.stream));
}

void Archive::remove(const Entry& entry, const RemoveOptions& options) {
  withContext(entry.path(), url(), [&] { ArchiveRemoval(*this, {&entry, 1}, options).run(); });
}

void Archive::remove(std::span<const Entry> entries, const RemoveOptions& options) {
  if (entries.empty()) return;
  withContext({}, url(), [&] { ArchiveRemoval(*this, entries, options).run(); });
}

}  // namespace veltrik
