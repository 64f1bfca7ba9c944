#pragma once

#include <filesystem>
#include <stdexcept>

#include "Platform/Foundation/Data.h"

namespace hostile {

/// A promise of the library that did not hold.
class BrokenPromise : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

// Each does everything of its kind with an archive that may be anything. The library's own errors are fine; any other
// exception leaves, and BrokenPromise is thrown when an archive was changed by what failed, or lost or altered an
// entry.

/// Opens it for reading and for changing.
void open(platform::DataView bytes);
/// Walks through the entries, asks for all that can be asked, and looks each up by its path.
void iterate(platform::DataView bytes);
/// Extracts every entry to nowhere, with blocks of two sizes; gives up on an archive after 32 MiB.
void extract(platform::DataView bytes);
/// Adds with a provider that fails, with one that is cancelled, and with one that succeeds.
void add(platform::DataView bytes);
/// Removes each of the first entries and compares what the others hold.
void remove(platform::DataView bytes);
/// Unpacks an archive's file into a folder.
void unpack(const std::filesystem::path& archive, const std::filesystem::path& destination);

}  // namespace hostile
