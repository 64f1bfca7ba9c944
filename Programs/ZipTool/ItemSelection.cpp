#include "Programs/ZipTool/ItemSelection.h"

#include <filesystem>

#include "Platform/Foundation/CocoaError.h"
#include "VeltrikAppKit/ArchiveError.h"

namespace ziptool {
namespace {

using platform::URL;
namespace filesystem = std::filesystem;

/// The word's path relative to the base, without "." and ".." and a closing "/"; "." for the base itself.
std::string nameBelow(const filesystem::path& base, const std::string& word) {
  const filesystem::path whole = (base / word).lexically_normal();
  std::string name = whole.lexically_relative(base);
  if (name.ends_with('/')) name.pop_back();
  if (name.empty() || name == ".." || name.starts_with("../")) {
    veltrik::ArchiveError error(veltrik::ArchiveError::Case::invalidEntryPath, "not below " + base.native());
    error.addContext(word, whole.native());
    throw error;
  }
  return name;
}

filesystem::path baseOf(const std::string& word, const std::optional<std::string>& base) {
  if (base) return (filesystem::absolute(*base) / "").lexically_normal();
  return word.starts_with('/') ? filesystem::path("/") : filesystem::current_path() / "";
}

void select(std::vector<veltrik::ItemToAdd>& items, const URL& base, const std::string& name) {
  const platform::FileManager files;
  const URL item = name == "." ? base : base.appendingPathComponent(name);
  if (!files.isReachableItem(item)) {
    platform::CocoaError error(platform::CocoaError::Code::fileReadNoSuchFile, item.path());
    error.setEntry(name);
    throw error;
  }
  if (name != ".") items.push_back({name, base});
  if (veltrik::entryType(item) != veltrik::Entry::EntryType::directory) return;
  const std::string prefix = name == "." ? std::string() : name + "/";
  for (std::string& below : files.subpathsOfDirectory(item.path())) {
    items.push_back({below.insert(0, prefix), base});
  }
}

}  // namespace

std::vector<veltrik::ItemToAdd> selectItems(const std::vector<std::string>& words,
                                            const std::optional<std::string>& base) {
  std::vector<veltrik::ItemToAdd> items;
  for (const auto& word : words) {
    const auto folder = baseOf(word, base);
    select(items, URL::directoryURL(folder.native()), nameBelow(folder, word));
  }
  return items;
}

}  // namespace ziptool
