#include <vector>

#include "Programs/ZipTool/Commands.h"
#include "Programs/ZipTool/OpenArchive.h"
#include "Programs/ZipTool/WorkMonitor.h"

namespace ziptool {
namespace {

/// Copied between two looks at whether to stop.
constexpr std::uint32_t kStep = 1 << 20;

}  // namespace

void run(const RemoveCommand& command) {
  const auto archive = openForChanging(command.archive);
  std::vector<veltrik::Entry> entries;
  entries.reserve(command.paths.size());
  for (const auto& path : command.paths) entries.push_back(requireEntry(*archive, path));
  platform::Progress progress;
  const WorkMonitor monitor(progress, "removing");
  archive->remove(entries, {.bufferSize = kStep, .progress = &progress});
}

}  // namespace ziptool
