#pragma once

#include <optional>
#include <string>
#include <vector>

#include "VeltrikAppKit/FileManager+ZIP.h"

namespace ziptool {

/// The items that the words of a command line name, folders with everything in them. A word is a path below `base`;
/// with no base it is taken from the working directory, or, if it is absolute, from the root. Throws `invalidEntryPath`
/// for what does not lie below its base, `fileReadNoSuchFile` for what is not there.
std::vector<veltrik::ItemToAdd> selectItems(const std::vector<std::string>& words,
                                            const std::optional<std::string>& base);

}  // namespace ziptool
