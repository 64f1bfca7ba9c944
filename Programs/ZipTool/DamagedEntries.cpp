#include "Programs/ZipTool/DamagedEntries.h"

#include <fmt/format.h>

#include "Programs/ZipTool/Output.h"
#include "Programs/ZipTool/TerminalText.h"
#include "VeltrikAppKit/ArchiveError.h"

namespace ziptool {

void DamagedEntries::compare(const veltrik::Entry& entry, std::uint32_t checksum) {
  if (entry.type() != veltrik::Entry::EntryType::directory && checksum != entry.checksum()) add(entry);
}

void DamagedEntries::add(const veltrik::Entry& entry) {
  paths_.push_back(entry.path());
}

void DamagedEntries::reportAndThrow(const std::string& archive) const {
  if (paths_.empty()) return;
  for (const auto& path : paths_)
    print(fmt::format("damaged: {}\n", outputIsTerminal() ? escapedControls(path) : path));
  flushOutput();
  veltrik::CompressionError error(veltrik::CompressionError::Case::corruptedData,
                                  fmt::format("{} of its entries do not match their checksums", paths_.size()));
  error.addContext(paths_.front(), archive);
  throw error;
}

}  // namespace ziptool
