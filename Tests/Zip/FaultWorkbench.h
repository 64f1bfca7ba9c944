#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "Tests/ScratchFolder.h"
#include "VeltrikAppKit/Archive.h"

namespace fault {

/// A folder with an archive, "archive.zip", and a tree of files, "source", that operations can be tried on again and
/// again.
class Workbench {
 public:
  Workbench();

  /// Everything as in the beginning.
  void reset() const;
  std::filesystem::path path(std::string_view name) const { return folder_.path() / name; }
  platform::URL url(std::string_view name) const;
  platform::URL archiveURL() const { return url("archive.zip"); }
  std::string archiveBytes() const { return readText(path("archive.zip")); }
  const std::string& originalArchive() const { return original_; }

  /// What stands in the folder: each item's kind, mode and content, and below "out" also the times that were set.
  std::map<std::string, std::string> contents() const;

 private:
  ScratchFolder folder_;
  std::string original_;
};

/// A public operation on a workbench, and what it promises about the archive when it fails.
struct Operation {
  enum class OnFailure {
    archiveAsBefore,
    archiveAsBeforeOrDone,
  };

  std::string name;
  OnFailure onFailure;
  /// Throws when it fails; the text says what it read, if it reads.
  std::function<std::string(const Workbench&)> run;

  friend std::ostream& operator<<(std::ostream& stream, const Operation& operation) { return stream << operation.name; }
};

/// Every public operation: opening, iterating, looking up, extracting, adding, removing, packing and unpacking.
std::vector<Operation> operations();

/// What GoogleTest calls a case: what it is called when it is printed, in one word.
template <class Case>
std::string nameOf(const testing::TestParamInfo<Case>& info) {
  std::string name = testing::PrintToString(info.param);
  std::ranges::replace(name, ' ', '_');
  return name;
}

}  // namespace fault
