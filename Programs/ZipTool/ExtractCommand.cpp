#include "Programs/ZipTool/Commands.h"
#include "Programs/ZipTool/DamagedEntries.h"
#include "Programs/ZipTool/OpenArchive.h"
#include "Programs/ZipTool/WorkMonitor.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace ziptool {
namespace {

std::optional<platform::StringEncoding> encodingNamed(const std::optional<std::string>& name) {
  if (!name) return std::nullopt;
  const auto encoding = platform::stringEncodingNamed(*name);
  if (!encoding) throw UsageError("unknown encoding '" + *name + "'");
  return encoding;
}

}  // namespace

void run(const ExtractCommand& command) {
  const auto encoding = encodingNamed(command.encoding);
  DamagedEntries damaged;
  std::size_t count = 0;
  const auto extracted = [&](const veltrik::Entry& entry, std::uint32_t checksum) {
    ++count;
    if (!command.skipCRC32) damaged.compare(entry, checksum);
  };
  {
    platform::Progress progress;
    const WorkMonitor monitor(progress, "extracting");
    veltrik::unzipItem(platform::URL::fileURL(command.archive), platform::URL::directoryURL(command.destination),
                       {.skipCRC32 = command.skipCRC32,
                        .maskSpecialPermissions = !command.keepSetIDBits,
                        .progress = &progress,
                        .preferredEncoding = encoding,
                        .extracted = extracted});
  }
  damaged.reportAndThrow(command.archive);
  requireAllEntries(*openForReading(command.archive), count);
}

}  // namespace ziptool
