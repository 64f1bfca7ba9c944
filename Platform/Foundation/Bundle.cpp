#include "Platform/Foundation/Bundle.h"

#include <dlfcn.h>
#include <plist/plist.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <mutex>

#include "Platform/Foundation/Session.h"

namespace platform {

namespace {

// A property list is a page or two; what is larger isn't one.
constexpr std::size_t kLargestPropertyList = std::size_t{1} << 20;
constexpr int kDeepestPropertyList = 64;

using PlistPointer = std::unique_ptr<void, decltype(&plist_free)>;

Value valueFrom(plist_t node, int depth);

Value dictionaryFrom(plist_t node, int depth) {
  Dictionary result;
  plist_dict_iter iterator = nullptr;
  plist_dict_new_iter(node, &iterator);
  const std::unique_ptr<void, decltype(&std::free)> owner(iterator, &std::free);
  for (;;) {
    char* key = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(node, iterator, &key, &value);
    if (!value) return result;
    const std::unique_ptr<char, decltype(&std::free)> keyOwner(key, &std::free);
    result.insert_or_assign(key, valueFrom(value, depth + 1));
  }
}

Value arrayFrom(plist_t node, int depth) {
  Value::Array result;
  for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i)
    result.push_back(valueFrom(plist_array_get_item(node, i), depth + 1));
  return result;
}

Value textFrom(plist_t node) {
  char* text = nullptr;
  plist_get_string_val(node, &text);
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  return text ? Value(text) : Value();
}

/// Null for what a `Value` doesn't hold (data, dates) and below `kDeepestPropertyList` levels.
Value valueFrom(plist_t node, int depth) {
  if (depth > kDeepestPropertyList) return {};
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t flag = 0;
      plist_get_bool_val(node, &flag);
      return flag != 0;
    }
    case PLIST_UINT: {
      std::uint64_t number = 0;
      plist_get_uint_val(node, &number);
      return static_cast<std::int64_t>(number);
    }
    case PLIST_REAL: {
      double number = 0;
      plist_get_real_val(node, &number);
      return number;
    }
    case PLIST_STRING:
      return textFrom(node);
    case PLIST_ARRAY:
      return arrayFrom(node, depth);
    case PLIST_DICT:
      return dictionaryFrom(node, depth);
    default:
      return {};
  }
}

std::optional<Dictionary> readPropertyList(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string bytes(kLargestPropertyList + 1, '\0');
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  const auto size = static_cast<std::size_t>(stream.gcount());
  if (size == 0 || size > kLargestPropertyList) return std::nullopt;
  plist_t node = nullptr;
  plist_from_memory(bytes.data(), static_cast<std::uint32_t>(size), &node);
  const PlistPointer owner(node, &plist_free);
  if (!node || plist_get_node_type(node) != PLIST_DICT) return std::nullopt;
  const Value value = dictionaryFrom(node, 0);
  return *value.get<Dictionary>();
}

std::vector<std::shared_ptr<Bundle>>& opened() {
  static auto& bundles = *new std::vector<std::shared_ptr<Bundle>>();  // loaded code never goes, nor do its bundles
  return bundles;
}

/// Read when the library is loaded: later the file may have been moved, or another one be in its place.
const std::filesystem::path startedProgram = [] {
  std::error_code failure;
  return std::filesystem::read_symlink("/proc/self/exe", failure);
}();

struct MainBundle {
  std::mutex mutex;
  std::shared_ptr<const Bundle> bundle;
};

MainBundle& mainBundle() {
  static auto& main = *new MainBundle();
  return main;
}

bool isPlainName(const std::filesystem::path& name) {
  return !name.empty() && name == name.filename() && name != "..";
}

}  // namespace

Bundle::Bundle(std::filesystem::path path, Dictionary info) : path_(std::move(path)), info_(std::move(info)) {}

std::shared_ptr<Bundle> Bundle::open(const std::filesystem::path& path) {
  requireMainThread("Bundle::open");
  std::error_code failure;
  const std::filesystem::path canonical = std::filesystem::canonical(path, failure);
  if (failure) return nullptr;
  const auto known = std::ranges::find(opened(), canonical, [](const auto& bundle) { return bundle->path(); });
  auto info = readPropertyList(canonical / "Contents/Info.plist");
  if (!info) return nullptr;
  if (known != opened().end()) {
    (*known)->info_ = std::move(*info);
    return *known;
  }
  return opened().emplace_back(new Bundle(canonical, std::move(*info)));
}

std::shared_ptr<const Bundle> Bundle::read(const std::filesystem::path& path) {
  std::error_code failure;
  const std::filesystem::path canonical = std::filesystem::canonical(path, failure);
  if (failure) return nullptr;
  auto info = readPropertyList(canonical / "Contents/Info.plist");
  return info ? std::shared_ptr<const Bundle>(new Bundle(canonical, std::move(*info))) : nullptr;
}

std::shared_ptr<const Bundle> Bundle::main() {
  MainBundle& main = mainBundle();
  const std::lock_guard lock(main.mutex);
  if (!main.bundle) {
    const auto folder = startedProgram.parent_path();
    if (folder.filename() == "Linux" && folder.parent_path().filename() == "Contents")
      main.bundle = read(folder.parent_path().parent_path());
    if (!main.bundle) {
      main.bundle.reset(new Bundle(folder, {}));
    }
  }
  return main.bundle;
}

void Bundle::setMainForTesting(const std::filesystem::path& path) {
  auto bundle = path.empty() ? nullptr : read(path);
  MainBundle& main = mainBundle();
  const std::lock_guard lock(main.mutex);
  main.bundle = std::move(bundle);
}

std::filesystem::path Bundle::programPath() {
  return startedProgram;
}

std::vector<std::shared_ptr<Bundle>> Bundle::allBundles() {
  return opened();
}

std::string Bundle::bundleIdentifier() const {
  const auto found = info_.find("CFBundleIdentifier");
  const std::string* const text = found == info_.end() ? nullptr : found->second.get<std::string>();
  return text ? *text : std::string();
}

std::filesystem::path Bundle::executablePath() const {
  const auto found = info_.find("CFBundleExecutable");
  const std::string* const name = found == info_.end() ? nullptr : found->second.get<std::string>();
  // The list may come from anywhere; the executable is in its folder or nowhere.
  return path_ / "Contents/Linux" / (name && isPlainName(*name) ? std::filesystem::path(*name) : path_.stem());
}

std::optional<std::filesystem::path> Bundle::pathForResource(const std::string& name) const {
  const std::filesystem::path relative(name);
  if (relative.empty() || relative.is_absolute() || std::ranges::find(relative, "..") != relative.end())
    return std::nullopt;
  std::error_code failure;
  const std::filesystem::path path = path_ / "Contents/Resources" / relative;
  if (!std::filesystem::is_regular_file(path, failure)) return std::nullopt;
  return path;
}

bool Bundle::load(std::string* error) {
  requireMainThread("Bundle::load");
  if (library_) return true;
  library_ = dlopen(executablePath().c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library_ && error) *error = dlerror();
  return library_ != nullptr;
}

void* Bundle::symbol(const std::string& name) const {
  return library_ ? dlsym(library_, name.c_str()) : nullptr;
}

}  // namespace platform
