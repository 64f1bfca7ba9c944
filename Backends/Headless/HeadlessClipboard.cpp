#include "Backends/Headless/HeadlessClipboard.h"

namespace headless {

std::vector<std::string> HeadlessClipboard::types() const {
  std::vector<std::string> types;
  if (faults_.clipboardFailing) return types;
  for (const auto& [type, content] : contents_) types.push_back(type);
  return types;
}

std::optional<std::string> HeadlessClipboard::read(const std::string& type) const {
  const auto found = contents_.find(type);
  if (faults_.clipboardFailing || found == contents_.end()) return std::nullopt;
  return found->second;
}

void HeadlessClipboard::write(const std::map<std::string, std::string>& contents) {
  std::string line = "clipboard: write";
  for (const auto& [type, content] : contents) line += " " + type;
  journal_.write(std::move(line));
  if (!faults_.clipboardFailing) contents_ = contents;
}

}  // namespace headless
