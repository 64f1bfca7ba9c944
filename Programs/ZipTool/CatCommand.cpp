#include "Platform/Foundation/Data.h"
#include "Programs/ZipTool/Commands.h"
#include "Programs/ZipTool/OpenArchive.h"
#include "Programs/ZipTool/Output.h"

namespace ziptool {

void run(const CatCommand& command) {
  const auto archive = openForReading(command.archive);
  const veltrik::Entry entry = requireEntry(*archive, command.path);
  const auto checksum = archive->extract(entry, [](platform::DataView block) { print(platform::textOf(block)); });
  flushOutput();
  if (entry.type() == veltrik::Entry::EntryType::directory || checksum == entry.checksum()) return;
  veltrik::CompressionError error(veltrik::CompressionError::Case::corruptedData, "the data do not match the checksum");
  error.addContext(command.path, command.archive);
  throw error;
}

}  // namespace ziptool
