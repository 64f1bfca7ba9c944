#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Foundation/URL.h"
#include "Platform/Port/Value.h"

namespace platform {

/// A folder with `Contents/Info.plist`, an executable in `Contents/Linux` and resources in `Contents/Resources`.
class PLATFORM_EXPORT Bundle {
 public:
  /// Null when there is no readable Info.plist under `path`. The same path gives the same bundle, with what its
  /// Info.plist says now. Main thread.
  static std::shared_ptr<Bundle> open(const std::filesystem::path& path);
  /// A bundle for looking at, read afresh; null as above. It can't be loaded. Any thread.
  static std::shared_ptr<const Bundle> read(const std::filesystem::path& path);
  /// The bundle whose "Contents/Linux" this program was started from. For a program elsewhere its folder, without an
  /// identifier. Stays the place where the program was installed when an update moves the files. Any thread.
  static std::shared_ptr<const Bundle> main();
  /// Makes the bundle at `path` the main one, or with an empty path the program's own again.
  static void setMainForTesting(const std::filesystem::path& path);
  /// Where this program's file was when it started.
  static std::filesystem::path programPath();
  /// Every bundle opened so far, in order.
  static std::vector<std::shared_ptr<Bundle>> allBundles();

  const std::filesystem::path& path() const { return path_; }
  /// Empty when the Info.plist names none.
  std::string bundleIdentifier() const;
  const Dictionary& info() const { return info_; }
  std::filesystem::path executablePath() const;
  /// The folder's location; its text ends with "/".
  URL url() const { return URL::directoryURL(path_.native()); }
  /// Nothing when there is no such file.
  std::optional<std::filesystem::path> pathForResource(const std::string& name) const;

  /// Loads the executable as a shared library, once; it stays loaded. False with the reason in `error`.
  bool load(std::string* error = nullptr);
  bool isLoaded() const { return library_ != nullptr; }
  /// The address of an exported C symbol of the loaded executable, or null.
  void* symbol(const std::string& name) const;

 private:
  Bundle(std::filesystem::path path, Dictionary info);
  std::filesystem::path path_;
  Dictionary info_;
  void* library_ = nullptr;
};

}  // namespace platform
