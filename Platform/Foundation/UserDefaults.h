#pragma once

#include <filesystem>
#include <string>

#include "Platform/Export.h"
#include "Platform/Port/Value.h"

namespace platform {

/// The application's settings: a JSON file `<config home>/<domain>/defaults.json`, written beside and renamed at every
/// change. The domain is the main bundle's identifier, or the program's name where there is none. An unreadable file
/// counts as empty and is kept under the name "defaults.json.broken". Main thread.
class PLATFORM_EXPORT UserDefaults {
 public:
  static UserDefaults& standard();
  UserDefaults();

  /// Null when the key was never set.
  Value get(const std::string& key) const;
  bool boolForKey(const std::string& key) const;
  /// A null value removes the key. A folder that can't be written is logged; the value holds for this process.
  void set(const std::string& key, Value value);

 private:
  void load();
  void save() const;
  std::filesystem::path file_;
  Dictionary values_;
};

}  // namespace platform
