#pragma once

#include <optional>
#include <string>

#include "Platform/Port/Value.h"

namespace veltrik {

/// A dictionary as log lines show it, on one line: `["isResized": "false", "parentID": "main"]`, keys in byte order,
/// `[:]` when it is empty. Values: `null`, `true`, `false`, numbers as short as they read back exactly, texts in double
/// quotes with JSON's escapes for quotes, backslashes and control characters, arrays as `[1, 2]`.
std::string textualForm(const platform::Dictionary& dictionary);

/// An array in the same way.
std::string textualListForm(const platform::Value::Array& array);

/// A dictionary as pretty-printed JSON text (UTF-8); nothing for one that JSON can't hold: a number that isn't finite.
std::optional<std::string> jsonString(const platform::Dictionary& dictionary);

}  // namespace veltrik
