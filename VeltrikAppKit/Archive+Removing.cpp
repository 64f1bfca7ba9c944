#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileManager.h"
#include "VeltrikAppKit/ArchiveState.h"

namespace veltrik {

namespace {

using platform::CocoaError;
using platform::URL;

constexpr std::size_t kUnwatchedStep = 1 << 20;
constexpr std::uint64_t kUnsignedDescriptorSize = 12;

[[noreturn]] void refuse(ArchiveError::Case code, const char* cause) {
  throw ArchiveError(code, cause);
}

/// The place of a new file in a folder of its own. Both are removed when it goes out of scope, by nothing that could
/// fail for want of memory, descriptors or room; the file may have been moved away by then.
class TemporaryPlace {
 public:
  explicit TemporaryPlace(const URL& folder)
      : file_(folder.appendingPathComponent(platform::globallyUniqueString())),
        folderPath_(folder.path()),
        filePath_(file_.path()) {}
  ~TemporaryPlace() {
    unlink(filePath_.c_str());
    rmdir(folderPath_.c_str());
  }
  TemporaryPlace(const TemporaryPlace&) = delete;
  TemporaryPlace& operator=(const TemporaryPlace&) = delete;
  const URL& file() const { return file_; }

 private:
  URL file_;
  std::string folderPath_;
  std::string filePath_;
};

/// The file itself, not a link to it, which would be replaced by a file.
URL realLocation(const URL& url) {
  const std::unique_ptr<char, decltype(&std::free)> path(realpath(url.path().c_str(), nullptr), std::free);
  if (!path) throw CocoaError::writing(errno, url.path());
  return URL::fileURL(path.get());
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
      adopt(rebuild(Archive::open(platform::Data(), {.accessMode = ArchiveAccessMode::create})));
    } else {
      replaceFile();
    }
    // Archives with gaps copy less than was expected.
    if (options_.progress != nullptr) {
      options_.progress->setCompletedUnitCount(options_.progress->totalUnitCount());
    }
  }

 private:
  /// A run of bytes that stays.
  struct Run {
    std::uint64_t start = 0;
    std::uint64_t length = 0;
  };

  static std::uint64_t recordLength(const Entry& entry);
  /// Looks at every entry before anything is done, and refuses what could not be done without loss.
  void survey();
  /// Writes everything but the removed entry into a new archive and returns it.
  std::unique_ptr<Archive> rebuild(std::unique_ptr<Archive> target) const;
  void copyRun(const Run& run, ArchiveStream& target, std::uint64_t position) const;
  void finish(ArchiveState& target, std::uint64_t position, const platform::Data& directory) const;
  void replaceFile();
  void adopt(std::unique_ptr<Archive> replacement);
  /// The stream is that of a file that is gone when the replacement had to be copied from another file system.
  void reopenIfCopied(const URL& location);

  ArchiveState& state_;
  const RemoveOptions& options_;
  std::map<std::uint32_t, const Entry*> wanted_;  ///< what to remove, by the place of its record
  std::set<std::uint64_t> removedPositions_;      ///< in the central directory
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
  unsigned count = 0;
  bool isInside = true;
  EntryReader reader(*state_.stream);
  forEachEntry(reader, state_.endRecord, [&](const Entry& entry, std::uint64_t position) {
    const std::uint64_t offset = entry.centralDirectoryStructure().relativeOffsetOfLocalHeader;
    const std::uint64_t length = recordLength(entry);
    isInside = isInside && offset + length <= directoryStart;
    firstRecord = std::min(firstRecord, offset);
    recordBytes += length;
    ++count;
    const auto wanted = wanted_.find(entry.centralDirectoryStructure().relativeOffsetOfLocalHeader);
    if (wanted != wanted_.end() && entry == *wanted->second) removedPositions_.insert(position);
    return true;
  });
  if (removedPositions_.size() < wanted_.size()) {
    refuse(ArchiveError::Case::invalidEntryPath, "the archive has no such entry");
  }
  if (count != state_.endRecord.totalNumberOfEntriesInCentralDirectory) {
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

std::unique_ptr<Archive> ArchiveRemoval::rebuild(std::unique_ptr<Archive> target) const {
  if (!target) refuse(ArchiveError::Case::unwritableArchive, "the new archive can't be made");
  ArchiveStream& stream = *target->state_->stream;
  platform::Data directory;
  std::uint64_t position = 0;
  Run run = {0, prefixLength_};
  unsigned count = 0;
  EntryReader reader(*state_.stream);
  forEachEntry(reader, state_.endRecord, [&](const Entry& entry, std::uint64_t directoryPosition) {
    ++count;
    if (removedPositions_.contains(directoryPosition)) return true;
    auto structure = entry.centralDirectoryStructure();
    // Records that follow each other are copied together.
    if (structure.relativeOffsetOfLocalHeader != run.start + run.length) {
      copyRun(run, stream, position);
      position += run.length;
      run = {structure.relativeOffsetOfLocalHeader, 0};
    }
    structure.relativeOffsetOfLocalHeader = static_cast<std::uint32_t>(position + run.length);
    run.length += recordLength(entry);
    platform::append(directory, structure.data());
    return true;
  });
  // The survey saw them all, but a read that fails now would end the walk just as quietly.
  if (count != state_.endRecord.totalNumberOfEntriesInCentralDirectory) {
    throw DataError(DataError::Case::unreadableFile, "an entry can't be read any more");
  }
  copyRun(run, stream, position);
  finish(*target->state_, position + run.length, directory);
  return target;
}

void ArchiveRemoval::finish(ArchiveState& target, std::uint64_t position, const platform::Data& directory) const {
  auto record = state_.endRecord;
  record.totalNumberOfEntriesInCentralDirectory -= static_cast<std::uint16_t>(removedPositions_.size());
  record.totalNumberOfEntriesOnDisk = record.totalNumberOfEntriesInCentralDirectory;
  record.sizeOfCentralDirectory = static_cast<std::uint32_t>(directory.size());
  record.offsetToStartOfCentralDirectory = static_cast<std::uint32_t>(position);
  target.stream->writeAt(position, directory);
  target.endRecordOffset = position + directory.size();
  target.stream->writeAt(target.endRecordOffset, record.data());
  target.endRecord = std::move(record);
}

void ArchiveRemoval::replaceFile() {
  const platform::FileManager files;
  const URL location = realLocation(state_.url);
  std::optional<TemporaryPlace> place;
  try {
    place.emplace(files.itemReplacementDirectory(location));
  } catch (const CocoaError& error) {
    throw ArchiveError(ArchiveError::Case::unwritableArchive, error.what());
  }
  auto replacement = rebuild(Archive::open(place->file(), {.accessMode = ArchiveAccessMode::create}));
  adoptAttributes(*replacement->state_->stream, *state_.stream);
  // On disk before it takes the name: a power cut must not leave the name to a file without its bytes.
  if (fsync(replacement->state_->stream->descriptor()) != 0) throw DataError(DataError::Case::unwritableFile, errno);
  files.replaceItem(location, place->file());
  adopt(std::move(replacement));
  reopenIfCopied(location);
}

void ArchiveRemoval::reopenIfCopied(const URL& location) {
  struct stat opened {};
  struct stat placed {};
  const bool isSame = fstat(state_.stream->descriptor(), &opened) == 0 && stat(location.path().c_str(), &placed) == 0 &&
                      opened.st_dev == placed.st_dev && opened.st_ino == placed.st_ino;
  if (isSame) return;
  auto reopened = ArchiveStream::openFile(location.path(), "rb+");
  if (!reopened) {
    // What is open holds the same bytes, but nobody would ever see what is written to it.
    state_.accessMode = ArchiveAccessMode::read;
    throw DataError(DataError::Case::unreadableFile, errno);
  }
  state_.streamChanged(std::move(reopened));
}

void ArchiveRemoval::adopt(std::unique_ptr<Archive> replacement) {
  ArchiveState& from = *replacement->state_;
  state_.endRecord = std::move(from.endRecord);
  state_.endRecordOffset = from.endRecordOffset;
  state_.tail.reset();
  // The new file was opened before it got the archive's name, so that nothing can fail now.
  state_.streamChanged(std::move(from.stream));
}

void Archive::remove(const Entry& entry, const RemoveOptions& options) {
  withContext(entry.path(), url(), [&] { ArchiveRemoval(*this, {&entry, 1}, options).run(); });
}

void Archive::remove(std::span<const Entry> entries, const RemoveOptions& options) {
  if (entries.empty()) return;
  withContext({}, url(), [&] { ArchiveRemoval(*this, entries, options).run(); });
}

}  // namespace veltrik
