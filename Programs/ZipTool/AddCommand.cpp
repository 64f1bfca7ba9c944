#include "Programs/ZipTool/Commands.h"
#include "Programs/ZipTool/ItemSelection.h"
#include "Programs/ZipTool/OpenArchive.h"
#include "Programs/ZipTool/WorkMonitor.h"

namespace ziptool {

void run(const AddCommand& command) {
  const auto archive = openForChanging(command.archive);
  const auto items = selectItems(command.paths, command.base);
  platform::Progress progress;
  const WorkMonitor monitor(progress, "adding");
  veltrik::addItems(*archive, items,
                    {.compressionMethod = command.method == Method::deflate ? veltrik::CompressionMethod::deflate
                                                                            : veltrik::CompressionMethod::none,
                     .progress = &progress});
}

}  // namespace ziptool
