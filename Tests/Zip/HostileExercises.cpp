#include "Tests/Zip/HostileExercises.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Foundation/CocoaError.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace hostile {
namespace {

using platform::DataView;
using veltrik::Archive;
using veltrik::Entry;

constexpr std::int64_t kMostOutput = 32 << 20;
constexpr std::size_t kMostRemovals = 4;
constexpr std::string_view kAddedPath = "added by the test";

void require(bool condition, const char* promise) {
  if (!condition) throw BrokenPromise(promise);
}

/// Runs `work` and returns whether it ended well; the library's own errors count as ending badly.
template <class Work>
bool succeeds(const Work& work) {
  try {
    work();
    return true;
  } catch (const veltrik::ZIPError&) {
    return false;
  } catch (const platform::CocoaError&) {
    return false;
  }
}

std::unique_ptr<Archive> opened(DataView bytes, Archive::AccessMode mode) {
  return Archive::open(platform::copyOf(bytes), {.accessMode = mode});
}

std::vector<Entry> entriesOf(const Archive& archive) {
  std::vector<Entry> entries;
  for (const Entry& entry : archive) entries.push_back(entry);
  return entries;
}

/// Checksum of an entry's data, or nothing when they can't be read. `left` is how much output may still be made.
std::optional<std::uint32_t> checksumOf(const Archive& archive, const Entry& entry, std::int64_t& left,
                                        std::uint32_t bufferSize) {
  platform::Progress progress;
  std::uint32_t checksum = 0;
  const bool done = succeeds([&] {
    checksum = archive.extract(entry,
                               [&](DataView block) {
                                 left -= static_cast<std::int64_t>(block.size());
                                 if (left < 0) progress.cancel();
                               },
                               {.bufferSize = bufferSize, .progress = &progress});
  });
  if (!done) return std::nullopt;
  return checksum;
}

/// Local and central header say the same, and the record lies before the directory: the entry can be copied whole.
bool isSound(const Archive& archive, const Entry& entry) {
  const auto& local = entry.localFileHeader();
  const auto& central = entry.centralDirectoryStructure();
  const std::uint64_t end = central.relativeOffsetOfLocalHeader + entry.localRecordLength();
  return local.compressionMethod == central.compressionMethod &&
         entry.compressedSize() == static_cast<std::int64_t>(central.compressedSize) &&
         entry.uncompressedSize() == static_cast<std::int64_t>(central.uncompressedSize) &&
         local.compressedSize == central.compressedSize &&
         end <= archive.endOfCentralDirectoryRecord().offsetToStartOfCentralDirectory;
}

struct Content {
  std::string path;
  std::optional<std::uint32_t> checksum;
  friend bool operator==(const Content&, const Content&) = default;
};

template <class Wanted>
std::vector<Content> contentsOf(const Archive& archive, std::int64_t& left, const Wanted& wanted) {
  std::vector<Content> contents;
  for (const Entry& entry : archive) {
    if (!wanted(entry)) continue;
    contents.push_back({entry.path(), checksumOf(archive, entry, left, veltrik::defaultReadChunkSize)});
  }
  return contents;
}

void removeNth(DataView bytes, std::size_t number) {
  const auto archive = opened(bytes, Archive::AccessMode::update);
  const Entry victim = entriesOf(*archive)[number];
  const auto countBefore = entriesOf(*archive).size();
  const auto before = archive->data();
  std::int64_t left = kMostOutput;
  const auto expected =
      contentsOf(*archive, left, [&](const Entry& entry) { return !(entry == victim) && isSound(*archive, entry); });
  if (!succeeds([&] { archive->remove(victim); })) {
    require(archive->data() == before, "a failed removal changed the archive");
    return;
  }
  require(entriesOf(*archive).size() < countBefore, "a removed entry is still there");
  std::int64_t leftAfter = kMostOutput;
  const auto kept = contentsOf(*archive, leftAfter, [](const Entry&) { return true; });
  if (left < 0 || leftAfter < 0) return;
  for (const Content& content : expected) {
    require(std::find(kept.begin(), kept.end(), content) != kept.end(), "a removal altered another entry");
  }
}

void addFailing(Archive& archive, veltrik::CompressionMethod method) {
  const auto before = archive.data();
  struct ProviderFailed {};
  try {
    archive.addEntry(kAddedPath, {.uncompressedSize = 100'000},
                     [](std::int64_t position, std::span<std::byte> destination) {
                       if (position > 20'000) throw ProviderFailed();
                       std::fill(destination.begin(), destination.end(), std::byte{'x'});
                       return destination.size();
                     },
                     {.compressionMethod = method});
    require(false, "a failing provider was not noticed");
  } catch (const ProviderFailed&) {
  } catch (const veltrik::ZIPError&) {
  }
  require(archive.data() == before, "a failed addition changed the archive");
}

void addCancelled(Archive& archive, veltrik::CompressionMethod method) {
  const auto before = archive.data();
  platform::Progress progress;
  const bool added = succeeds([&] {
    archive.addEntry(kAddedPath, {.uncompressedSize = 100'000},
                     [&](std::int64_t, std::span<std::byte> destination) {
                       progress.cancel();
                       return destination.size();
                     },
                     {.compressionMethod = method, .progress = &progress});
  });
  require(!added, "a cancelled addition went on");
  require(archive.data() == before, "a cancelled addition changed the archive");
}

void addSucceeding(Archive& archive, veltrik::CompressionMethod method) {
  const std::string text = "text of the added entry";
  const bool nameWasTaken = archive[kAddedPath].has_value();
  const auto before = archive.data();
  const auto countBefore = archive.endOfCentralDirectoryRecord().totalNumberOfEntriesInCentralDirectory;
  const bool added = succeeds([&] {
    archive.addEntry(kAddedPath, {.uncompressedSize = static_cast<std::uint32_t>(text.size())},
                     [&](std::int64_t position, std::span<std::byte> destination) {
                       const auto rest = platform::bytesOf(text).subspan(static_cast<std::size_t>(position));
                       const auto count = std::min(rest.size(), destination.size());
                       std::copy_n(rest.begin(), count, destination.begin());
                       return count;
                     },
                     {.compressionMethod = method});
  });
  if (!added) {
    require(archive.data() == before, "a refused addition changed the archive");
    return;
  }
  require(archive.endOfCentralDirectoryRecord().totalNumberOfEntriesInCentralDirectory == countBefore + 1,
          "an added entry is not counted");
  if (const auto entry = archive[kAddedPath]; entry && !nameWasTaken) {
    std::string read;
    archive.extract(*entry, [&](DataView block) { read += platform::textOf(block); });
    require(read == text, "an added entry reads differently");
  }
}

}  // namespace

void open(DataView bytes) {
  for (const auto mode : {Archive::AccessMode::read, Archive::AccessMode::update}) {
    const auto archive = opened(bytes, mode);
    if (!archive) continue;
    require(archive->data() && std::ranges::equal(*archive->data(), bytes), "opening changed the archive");
  }
}

void iterate(DataView bytes) {
  const auto archive = opened(bytes, Archive::AccessMode::read);
  if (!archive) return;
  std::map<std::string, Entry> firsts;
  std::size_t count = 0;
  for (const Entry& entry : *archive) {
    ++count;
    require(archive->totalUnitCountForRemoving(entry) >= 0, "a negative count of units");
    require(archive->totalUnitCountForReading(entry) >= 0, "a negative count of units");
    static_cast<void>(entry.fileAttributes());
    static_cast<void>(entry.path(platform::StringEncoding::dosKorean));
    firsts.try_emplace(entry.path(), entry);
  }
  require(count <= archive->endOfCentralDirectoryRecord().totalNumberOfEntriesInCentralDirectory,
          "more entries than the archive states");
  for (const auto& [path, entry] : firsts) {
    const auto found = (*archive)[path];
    require(found && *found == entry, "a look-up gave another entry");
  }
}

void extract(DataView bytes) {
  const auto archive = opened(bytes, Archive::AccessMode::read);
  if (!archive) return;
  for (const std::uint32_t bufferSize : {veltrik::defaultReadChunkSize, 100u}) {
    std::int64_t left = kMostOutput;
    for (const Entry& entry : *archive) {
      if (left < 0) break;
      static_cast<void>(checksumOf(*archive, entry, left, bufferSize));
    }
  }
}

void add(DataView bytes) {
  for (const auto method : {veltrik::CompressionMethod::none, veltrik::CompressionMethod::deflate}) {
    const auto archive = opened(bytes, Archive::AccessMode::update);
    if (!archive) return;
    addFailing(*archive, method);
    addCancelled(*archive, method);
    addSucceeding(*archive, method);
  }
}

void remove(DataView bytes) {
  const auto archive = opened(bytes, Archive::AccessMode::read);
  if (!archive) return;
  const std::size_t count = std::min(entriesOf(*archive).size(), kMostRemovals);
  for (std::size_t number = 0; number < count; ++number) removeNth(bytes, number);
}

void unpack(const std::filesystem::path& archive, const std::filesystem::path& destination) {
  succeeds([&] {
    veltrik::unzipItem(platform::URL::fileURL(archive.native()), platform::URL::directoryURL(destination.native()),
                       {.maskSpecialPermissions = true});
  });
}

}  // namespace hostile
