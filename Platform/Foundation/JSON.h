#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Export.h"
#include "Platform/Port/Value.h"

namespace platform {

/// RFC 8259 text of a value. Text that is not UTF-8 is written with U+FFFD in its place.
PLATFORM_EXPORT std::string jsonText(const Value& value, bool pretty = false);
/// Nothing for text that isn't one JSON document, or is nested deeper than 512.
PLATFORM_EXPORT std::optional<Value> valueFromJSON(std::string_view text);

}  // namespace platform
