#pragma once

#include <string>

#include "Platform/Foundation/URL.h"

namespace veltrik {

/// The folder that a downloaded archive is unpacked into: the one that holds it.
class UnpackFolder {
 public:
  explicit UnpackFolder(platform::URL archive) : archive_(std::move(archive)) {}

  /// Removes the application bundles that an earlier run unpacked here from an archive with the same names; the tool
  /// would ask before it overwrites, and files of two versions would be mixed. False, with nothing removed, when
  /// `installed` would be among them, or one can't be removed: unpacking would change it.
  bool clearFor(const platform::URL& installed) const;
  /// Whether everything in the archive is there now, whole: the tool ends with success even where it could not make a
  /// link, or not give a file its rights. True for an archive that only the tool can read, and for names that it may
  /// have changed.
  bool isComplete() const;
  /// The archive's path as the tool takes it: it reads a name as a pattern, so what has a meaning there is put in
  /// brackets. For most names simply the path.
  std::string archiveArgument() const;

 private:
  platform::URL archive_;
};

}  // namespace veltrik
