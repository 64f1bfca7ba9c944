#include <algorithm>
#include <exception>
#include <map>
#include <mutex>
#include <vector>

#include "Programs/ZipTool/Commands.h"
#include "Programs/ZipTool/DamagedEntries.h"
#include "Programs/ZipTool/OpenArchive.h"
#include "Programs/ZipTool/WorkMonitor.h"
#include "VeltrikAppKit/WorkAhead.h"

namespace ziptool {
namespace {

using platform::Progress;
using veltrik::Archive;
using veltrik::Entry;

/// Read and checked at a time.
constexpr std::uint32_t kStep = 1 << 17;
/// What a thread takes at a time: so many entries, or fewer that have so many bytes.
constexpr std::size_t kBatch = 32;
constexpr std::int64_t kBatchBytes = 1 << 20;

/// Extracts an entry to nowhere. What the data's own form tells is damage like a wrong checksum; other errors are
/// passed on.
bool isDamaged(const Archive& archive, const Entry& entry, Progress& progress) {
  try {
    const auto checksum =
        archive.extract(entry, [](platform::DataView) {}, {.bufferSize = kStep, .progress = &progress});
    return entry.type() != Entry::EntryType::directory && checksum != entry.checksum();
  } catch (const veltrik::CompressionError&) {
    return true;
  } catch (const veltrik::ArchiveError& error) {
    if (error.code() != veltrik::ArchiveError::Case::invalidCompressionMethod) throw;
    return true;
  }
}

/// All entries of an archive, read once and checked on all processors, each with the archive opened for itself.
class Check {
 public:
  explicit Check(const std::string& path) : path_(path), archive_(openForReading(path)), next_(archive_->begin()) {
    // Counted in the archive's bytes, which are known without a look at the entries.
    progress_.setTotalUnitCount(archive_->endOfCentralDirectoryRecord().offsetToStartOfCentralDirectory);
  }

  void run() {
    {
      const WorkMonitor monitor(progress_, "testing");
      const veltrik::HelpingThreads helpers([this](std::size_t) { work(); });
      work();
    }
    // That of the first entry, whichever was met first.
    if (!failures_.empty()) std::rethrow_exception(failures_.begin()->second);
    DamagedEntries damaged;
    for (const auto& [at, entry] : damaged_) damaged.add(entry);
    damaged.reportAndThrow(path_);
    requireAllEntries(*archive_, count_);
  }

 private:
  struct Batch {
    std::size_t first = 0;
    std::vector<Entry> entries;
  };

  Batch take() {
    const std::lock_guard guard(lock_);
    Batch batch{count_, {}};
    std::int64_t bytes = 0;
    while (failures_.empty() && next_ != archive_->end() && batch.entries.size() < kBatch && bytes < kBatchBytes) {
      bytes += next_->uncompressedSize();
      batch.entries.push_back(*next_);
      ++next_;
      ++count_;
    }
    return batch;
  }

  void work() {
    std::size_t at = 0;
    try {
      const auto archive = openForReading(path_);
      for (Batch batch = take(); !batch.entries.empty(); batch = take()) {
        at = batch.first;
        for (const Entry& entry : batch.entries) check(*archive, entry, at++);
      }
    } catch (...) {
      const std::lock_guard guard(lock_);
      failures_.emplace(at, std::current_exception());
    }
  }

  void check(const Archive& archive, const Entry& entry, std::size_t at) {
    const auto units = static_cast<std::int64_t>(entry.localRecordLength());
    const auto part = std::make_shared<Progress>();
    const bool isLarge = entry.uncompressedSize() > kBatchBytes;
    if (isLarge) progress_.addChild(part, units);
    if (progress_.isCancelled()) part->cancel();
    const bool damaged = isDamaged(archive, entry, *part);
    // Whatever the data did, this entry is done with.
    if (isLarge) {
      part->setCompletedUnitCount(part->totalUnitCount());
    } else {
      progress_.addCompletedUnitCount(units);
    }
    if (!damaged) return;
    const std::lock_guard guard(lock_);
    damaged_.emplace(at, entry);
  }

  std::string path_;
  std::unique_ptr<Archive> archive_;  ///< whose entries are handed out
  Progress progress_;
  std::mutex lock_;
  Archive::Iterator next_;
  std::size_t count_ = 0;
  std::map<std::size_t, Entry> damaged_;
  std::map<std::size_t, std::exception_ptr> failures_;
};

}  // namespace

void run(const TestCommand& command) {
  Check(command.archive).run();
}

}  // namespace ziptool
