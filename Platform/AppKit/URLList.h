#pragma once

#include <string_view>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Foundation/URL.h"

namespace platform {

/// The locations in a list of one a line, as text/uri-list has them (RFC 2483) and as file managers put it behind a
/// line of their own ("copy"). A file's location is read leniently: characters that had to be encoded and aren't belong
/// to its name. Lines that hold none are left out.
PLATFORM_EXPORT std::vector<URL> urlsFromList(std::string_view text);

}  // namespace platform
