#pragma once

#include <string>
#include <string_view>

namespace ziptool {

/// A name from an archive made fit for a terminal: control characters, also those of the C1 set, become \n, \t, \r,
/// \x1b and so on, and a backslash becomes two, so that the text can be told from an escaped one.
std::string escapedControls(std::string_view name);

}  // namespace ziptool
