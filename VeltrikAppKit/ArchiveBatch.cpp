#include "VeltrikAppKit/ArchiveBatch.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <limits>

#include "Platform/Foundation/CocoaError.h"
#include "VeltrikAppKit/Data+CRC32.h"

namespace veltrik {

namespace {

using platform::CocoaError;
using platform::DataView;

constexpr std::uint16_t kVersionNeeded = 20;
constexpr std::uint16_t kUTF8Flag = 0x0800;
constexpr std::uint64_t kLargestOffset = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kLongestName = std::numeric_limits<std::uint16_t>::max();
constexpr unsigned kMostEntries = std::numeric_limits<std::uint16_t>::max();
/// What may stand between the directory and its end record, such as a signature. It is lost when the archive is
/// changed.
constexpr std::uint64_t kLargestGap = 1 << 20;
/// Room for the structures of a few more entries.
constexpr std::size_t kUsualGrowth = 4096;

[[noreturn]] void refuse(ArchiveError::Case code, const char* cause) {
  throw ArchiveError(code, cause);
}

/// Throws unless the directory lies before the end record and holds exactly the structures that the end record counts.
void requireSoundDirectory(const ArchiveState& state) {
  const auto& end = state.endRecord;
  const std::uint64_t start = end.offsetToStartOfCentralDirectory;
  const std::uint64_t limit = start + end.sizeOfCentralDirectory;
  if (limit > state.endRecordOffset || state.endRecordOffset - limit > kLargestGap) {
    refuse(ArchiveError::Case::invalidStartOfCentralDirectoryOffset, "the central directory is not where it should be");
  }
  constexpr std::size_t kWindow = 65536;
  ReadWindow window(*state.stream, kWindow);
  std::uint64_t position = start;
  Entry::CentralDirectoryStructure structure;
  for (unsigned left = end.totalNumberOfEntriesInCentralDirectory; left > 0; --left) {
    if (!readRecord(window, position, structure)) {
      refuse(ArchiveError::Case::unwritableArchive, "the central directory is damaged");
    }
    position += structure.size();
  }
  if (position != limit) {
    refuse(ArchiveError::Case::unwritableArchive, "the central directory holds more than its end record says");
  }
}

/// The archive's bytes from its central directory on.
platform::Data readTail(const ArchiveState& state) {
  requireSoundDirectory(state);
  const std::uint64_t start = state.endRecord.offsetToStartOfCentralDirectory;
  const auto size = static_cast<std::size_t>(state.stream->size() - start);
  platform::Data tail;
  tail.reserve(size + kUsualGrowth);
  tail.resize(size);
  if (state.stream->readAt(start, tail) < size) {
    throw DataError(DataError::Case::unreadableFile, "the archive became shorter while it was read");
  }
  return tail;
}

/// The archive's state, ready for additions.
ArchiveState& prepared(ArchiveState& state) {
  if (state.accessMode == ArchiveAccessMode::read) {
    refuse(ArchiveError::Case::unwritableArchive, "the archive is open for reading");
  }
  if (!state.tail) state.tail = readTail(state);
  return state;
}

std::int64_t unitsOf(const NewEntry& entry) {
  return entry.type == Entry::EntryType::directory ? 1 : std::int64_t{entry.uncompressedSize};
}

std::optional<std::pair<dev_t, ino_t>> identityOf(int file) {
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) return std::nullopt;
  return std::pair(status.st_dev, status.st_ino);
}

Date dateOf(const timespec& time) {
  const auto sinceEpoch = std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  return Date(std::chrono::duration_cast<Date::duration>(sinceEpoch));
}

NewEntry describe(const struct stat& status, const ItemPlace& place) {
  NewEntry entry{.type = entryType(status.st_mode),
                 .modificationDate = dateOf(status.st_mtim),
                 .permissions = static_cast<std::uint16_t>(status.st_mode)};
  if (entry.type == Entry::EntryType::directory) return entry;
  if (static_cast<std::uint64_t>(status.st_size) > kLargestOffset) throw CocoaError::reading(EFBIG, place.path);
  entry.uncompressedSize = static_cast<std::uint32_t>(status.st_size);
  return entry;
}

/// The error for an item that could not be opened.
CocoaError openingError(int errorNumber, const ItemPlace& place) {
  CocoaError usual = CocoaError::reading(errorNumber, place.path);
  if (errorNumber == EACCES || errorNumber == ENOENT || errorNumber == ENOTDIR) return usual;
  return CocoaError(CocoaError::Code::fileNoSuchFile, {}, usual.cause());
}

platform::FileDescriptor openForReading(const ItemPlace& place) {
  // Not blocking: a pipe in the tree must not make this wait for a writer.
  return platform::FileDescriptor(
      openat(place.directory, place.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
}

/// Reads on until the destination is full.
std::size_t readFully(int file, std::span<std::byte> destination) {
  std::size_t done = 0;
  while (done < destination.size()) {
    const ssize_t count = read(file, destination.data() + done, destination.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw DataError(DataError::Case::unreadableFile, errno);
    if (count == 0) throw DataError(DataError::Case::unreadableFile, "the file became shorter while it was read");
    done += static_cast<std::size_t>(count);
  }
  return done;
}

Entry::LocalFileHeader headerOf(std::string_view path, const NewEntry& entry, CompressionMethod method) {
  return {.versionNeededToExtract = kVersionNeeded,
          .generalPurposeBitFlag = kUTF8Flag,
          .compressionMethod = static_cast<std::uint16_t>(method),
          .lastModFileTime = dosTime(entry.modificationDate),
          .lastModFileDate = dosDate(entry.modificationDate),
          .uncompressedSize = entry.uncompressedSize,
          .fileNameLength = static_cast<std::uint16_t>(path.size()),
          .variableData = platform::copyOf(platform::bytesOf(path))};
}

}  // namespace

ArchiveBatch::ArchiveBatch(Archive& archive)
    : state_(prepared(*archive.state_)),
      writer_(*state_.stream, state_.endRecord.offsetToStartOfCentralDirectory,
              state_.endRecord.offsetToStartOfCentralDirectory + state_.tail->size()),
      endRecord_(state_.endRecord),
      archiveFile_(identityOf(state_.stream->descriptor())) {}

ArchiveBatch::~ArchiveBatch() {
  if (!isOver_) undo();
}

void ArchiveBatch::reserve(std::size_t count, std::size_t nameBytes) {
  newStructures_.reserve(count * Entry::CentralDirectoryStructure::fixedSize + nameBytes +
                         Archive::EndOfCentralDirectoryRecord::fixedSize + endRecord_.zipFileCommentLength);
}

void ArchiveBatch::undo() noexcept {
  isOver_ = true;
  writer_.undo(*state_.tail);
  // Undoing may fail too, so the bytes on disk are looked at again next time.
  state_.tail.reset();
  state_.streamChanged();
}

void ArchiveBatch::requireOffset(std::uint64_t offset) const {
  if (offset > kLargestOffset) {
    refuse(ArchiveError::Case::invalidStartOfCentralDirectoryOffset, "the archive would be larger than 4 GiB");
  }
}

void ArchiveBatch::requireRoom(std::string_view path, const NewEntry& entry, CompressionMethod method) const {
  if (!platform::isValidUTF8(path)) refuse(ArchiveError::Case::invalidEntryPath, "the name is not UTF-8");
  if (path.size() > kLongestName) refuse(ArchiveError::Case::invalidEntryPath, "the name is longer than 65535 bytes");
  if (endRecord_.totalNumberOfEntriesInCentralDirectory == kMostEntries) {
    refuse(ArchiveError::Case::unwritableArchive, "the archive holds 65535 entries, which is as many as it can");
  }
  const std::uint64_t dataStart = writer_.position() + Entry::LocalFileHeader::fixedSize + path.size();
  requireOffset(dataStart + (method == CompressionMethod::none ? entry.uncompressedSize : 0));
  requireOffset(std::uint64_t{endRecord_.sizeOfCentralDirectory} + Entry::CentralDirectoryStructure::fixedSize +
                path.size());
}

void ArchiveBatch::add(std::string_view path, const NewEntry& entry, const ByteProvider& provider,
                       const AddOptions& options) {
  const CompressionMethod method =
      entry.type == Entry::EntryType::file ? options.compressionMethod : CompressionMethod::none;
  requireRoom(path, entry, method);
  if (options.progress != nullptr) options.progress->setTotalUnitCount(unitsOf(entry));
  rewindingOnFailure([&] { writeRecord(path, entry, method, provider, options); });
}

template <class Write>
void ArchiveBatch::rewindingOnFailure(const Write& write) {
  const std::uint64_t start = writer_.position();
  try {
    write();
  } catch (...) {
    writer_.rewind(start);
    throw;
  }
}

void ArchiveBatch::writeRecord(std::string_view path, const NewEntry& entry, CompressionMethod method,
                               const ByteProvider& provider, const AddOptions& options) {
  Entry::LocalFileHeader header = headerOf(path, entry, method);
  const std::uint64_t offset = writer_.position();
  writer_.append(header.data());
  const Written written = writeData(entry, method, provider, options);
  requireOffset(writer_.position());
  header.crc32 = written.crc;
  header.compressedSize = static_cast<std::uint32_t>(written.size);
  writer_.patch(offset, header.data());
  appendStructure(header, entry, offset);
}

void ArchiveBatch::addPrepared(std::string_view path, const PreparedFile& file) {
  requireRoom(path, file.entry, file.method);
  Entry::LocalFileHeader header = headerOf(path, file.entry, file.method);
  header.crc32 = file.crc;
  header.compressedSize = static_cast<std::uint32_t>(file.data.size());
  const std::uint64_t offset = writer_.position();
  requireOffset(offset + header.size() + file.data.size());
  rewindingOnFailure([&] {
    writer_.append(header.data());
    writer_.append(file.data);
    appendStructure(header, file.entry, offset);
  });
}

void ArchiveBatch::appendStructure(const Entry::LocalFileHeader& header, const NewEntry& entry, std::uint64_t offset) {
  const std::uint16_t permissions = entry.permissions.value_or(
      entry.type == Entry::EntryType::directory ? defaultDirectoryPermissions : defaultFilePermissions);
  const auto structure = Entry::CentralDirectoryStructure::of(header, externalAttributes(entry.type, permissions),
                                                              static_cast<std::uint32_t>(offset));
  platform::append(newStructures_, structure.data());
  endRecord_.totalNumberOfEntriesOnDisk++;
  endRecord_.totalNumberOfEntriesInCentralDirectory++;
  endRecord_.sizeOfCentralDirectory += static_cast<std::uint32_t>(structure.size());
}

ArchiveBatch::Written ArchiveBatch::writeData(const NewEntry& entry, CompressionMethod method,
                                              const ByteProvider& provider, const AddOptions& options) {
  if (entry.type == Entry::EntryType::file) {
    return method == CompressionMethod::none ? writeStored(entry, provider, options)
                                             : writeDeflated(entry, provider, options);
  }
  Written written;
  if (entry.type == Entry::EntryType::directory) {
    provider(0, {});
  } else {
    written = writeLink(entry, provider);
  }
  if (options.progress != nullptr) options.progress->setCompletedUnitCount(unitsOf(entry));
  return written;
}

ArchiveBatch::Written ArchiveBatch::writeStored(const NewEntry& entry, const ByteProvider& provider,
                                                const AddOptions& options) {
  const std::size_t step = chunkSize(options.bufferSize);
  const std::uint64_t total = entry.uncompressedSize;
  Written written;
  for (std::uint64_t position = 0; position < total; position += step) {
    throwIfCancelled(options.progress);
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(total - position, step));
    const std::span room = writer_.room(wanted);
    const std::size_t count = std::min(provider(static_cast<std::int64_t>(position), room), wanted);
    written.crc = crc32(room.first(count), written.crc);
    writer_.advance(count);
    written.size += count;
    if (options.progress != nullptr) {
      options.progress->setCompletedUnitCount(static_cast<std::int64_t>(written.size));
    }
  }
  return written;
}

ArchiveBatch::Written ArchiveBatch::writeDeflated(const NewEntry& entry, const ByteProvider& provider,
                                                  const AddOptions& options) {
  Written written;
  const auto watched = [&](std::int64_t position, std::span<std::byte> destination) {
    throwIfCancelled(options.progress);
    const std::size_t count = provider(position, destination);
    if (options.progress != nullptr) options.progress->addCompletedUnitCount(static_cast<std::int64_t>(count));
    return count;
  };
  const auto consumer = [&](DataView block) {
    writer_.append(block);
    written.size += block.size();
    requireOffset(writer_.position());
  };
  written.crc = state_.compressor.run(entry.uncompressedSize, chunkSize(options.bufferSize), false, watched, consumer);
  return written;
}

ArchiveBatch::Written ArchiveBatch::writeLink(const NewEntry& entry, const ByteProvider& provider) {
  const std::span room = writer_.room(entry.uncompressedSize);
  const std::size_t count = std::min(provider(0, room), room.size());
  writer_.advance(count);
  return {crc32(room.first(count)), count};
}

void ArchiveBatch::addItem(std::string_view path, const ItemPlace& place, const AddOptions& options) {
  if (place.path.find('\0') != std::string::npos) {
    throw CocoaError(CocoaError::Code::fileReadInvalidFileName, place.path, "the name holds a NUL byte");
  }
  const platform::FileDescriptor file = openForReading(place);
  if (!file && errno == ELOOP) return addLink(path, place, options);
  if (!file) throw openingError(errno, place);
  struct stat status {};
  if (fstat(file.get(), &status) != 0) throw CocoaError::reading(errno, place.path);
  if (S_ISDIR(status.st_mode)) {
    const std::string name = std::string(path) + (path.ends_with('/') ? "" : "/");
    return add(
        name, describe(status, place), [](std::int64_t, std::span<std::byte>) { return std::size_t{0}; }, options);
  }
  if (!S_ISREG(status.st_mode)) {
    throw CocoaError(CocoaError::Code::fileReadUnknown, place.path, "neither a file nor a directory nor a link");
  }
  if (archiveFile_ == std::pair(status.st_dev, status.st_ino)) {
    refuse(ArchiveError::Case::invalidEntryPath, "the archive can't hold itself");
  }
  add(
      path, describe(status, place),
      [&](std::int64_t, std::span<std::byte> destination) { return readFully(file.get(), destination); }, options);
}

std::optional<ArchiveBatch::PreparedFile> ArchiveBatch::prepare(const ItemPlace& place, std::uint64_t largest,
                                                                CompressionMethod method,
                                                                DeflateStream& compressor) const {
  const platform::FileDescriptor file = openForReading(place);
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (size > largest || archiveFile_ == std::pair(status.st_dev, status.st_ino)) return std::nullopt;
  PreparedFile prepared{describe(status, place), method, 0, {}};
  platform::Data content(size);
  readFully(file.get(), content);
  if (method == CompressionMethod::none) {
    prepared.crc = crc32(content);
    prepared.data = std::move(content);
    return prepared;
  }
  const auto provider = [&](std::int64_t position, std::span<std::byte> destination) {
    std::copy_n(content.begin() + position, destination.size(), destination.begin());
    return destination.size();
  };
  prepared.data.reserve(content.size() / 2);
  prepared.crc = compressor.run(status.st_size, defaultWriteChunkSize, false, provider,
                                [&](DataView block) { platform::append(prepared.data, block); });
  return prepared;
}

void ArchiveBatch::addLink(std::string_view path, const ItemPlace& place, const AddOptions& options) {
  struct stat status {};
  std::array<char, PATH_MAX> buffer{};
  const ssize_t length = readlinkat(place.directory, place.name.c_str(), buffer.data(), buffer.size());
  if (length < 0 || fstatat(place.directory, place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    throw CocoaError::reading(errno, place.path);
  }
  const DataView target = platform::bytesOf({buffer.data(), static_cast<std::size_t>(length)});
  NewEntry entry = describe(status, place);
  // Some file systems give their links no size.
  entry.uncompressedSize = static_cast<std::uint32_t>(target.size());
  const auto provider = [&](std::int64_t, std::span<std::byte> destination) {
    std::copy(target.begin(), target.end(), destination.begin());
    return target.size();
  };
  add(path, entry, provider, options);
}

void ArchiveBatch::commit() {
  platform::Data& tail = *state_.tail;
  const std::size_t directorySize = state_.endRecord.sizeOfCentralDirectory;
  // In a new archive, which may have a great many, the new structures are all there are: they need not be copied.
  platform::Data& kept = directorySize == 0 ? newStructures_ : tail;
  const std::uint64_t start = writer_.position();
  requireOffset(start);
  endRecord_.offsetToStartOfCentralDirectory = static_cast<std::uint32_t>(start);
  const platform::Data end = endRecord_.data();
  const std::size_t size = directorySize + newStructures_.size() + end.size();
  try {
    // First of all, since nothing may fail once the archive is changed.
    kept.reserve(size);
    for (const DataView part : {DataView(tail).first(directorySize), DataView(newStructures_), DataView(end)}) {
      writer_.append(part);
    }
    writer_.commit();
  } catch (...) {
    undo();
    throw;
  }
  isOver_ = true;
  if (&kept == &tail) {
    tail.resize(directorySize);
    platform::append(tail, newStructures_);
  } else {
    tail = std::move(newStructures_);
  }
  platform::append(tail, end);
  state_.endRecordOffset = start + size - end.size();
  state_.endRecord = endRecord_;
  state_.streamChanged();
}

}  // namespace veltrik
