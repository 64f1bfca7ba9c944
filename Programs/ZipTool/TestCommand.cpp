#include <fmt/format.h>

#include <vector>

#include "Programs/ZipTool/Commands.h"
#include "Programs/ZipTool/DamagedEntries.h"
#include "Programs/ZipTool/OpenArchive.h"
#include "Programs/ZipTool/WorkMonitor.h"

namespace ziptool {
namespace {

using veltrik::Archive;
using veltrik::Entry;

/// Extracts to nowhere. What the data's own form tells is damage like a wrong checksum; other errors are passed on.
void testEntry(const Archive& archive, const Entry& entry, platform::Progress& progress, DamagedEntries& damaged) {
  auto part = std::make_shared<platform::Progress>(archive.totalUnitCountForReading(entry));
  progress.addChild(part, part->totalUnitCount());
  try {
    damaged.compare(entry, archive.extract(entry, [](platform::DataView) {}, {.progress = part.get()}));
  } catch (const veltrik::CompressionError&) {
    damaged.add(entry);
  } catch (const veltrik::ArchiveError& error) {
    if (error.code() != veltrik::ArchiveError::Case::invalidCompressionMethod) throw;
    damaged.add(entry);
  }
  // Whatever the data did, this entry is done with.
  part->setCompletedUnitCount(part->totalUnitCount());
}

std::int64_t totalUnits(const Archive& archive) {
  std::int64_t total = 0;
  for (const Entry& entry : archive) total += archive.totalUnitCountForReading(entry);
  return total;
}

}  // namespace

void run(const TestCommand& command) {
  const auto archive = openForReading(command.archive);
  DamagedEntries damaged;
  std::size_t count = 0;
  {
    platform::Progress progress(totalUnits(*archive));
    const WorkMonitor monitor(progress, "testing");
    for (const Entry& entry : *archive) {
      testEntry(*archive, entry, progress, damaged);
      ++count;
    }
  }
  damaged.reportAndThrow(command.archive);
  requireAllEntries(*archive, count);
}

}  // namespace ziptool
