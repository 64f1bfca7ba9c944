#pragma once

#include <cstddef>
#include <optional>

#include "Platform/Port/Value.h"

struct sd_bus_message;

namespace desktop {

/// A notification's contents may take this many bytes, keys and fixed costs of each value included.
inline constexpr std::size_t kLargestPayload = std::size_t{1} << 20;
inline constexpr int kDeepestPayload = 32;

/// Whether a dictionary can cross to another process: not too large, not too deep, texts without NUL.
bool canCross(const platform::Dictionary& dictionary);

/// Appends an a{sv}. A truth value is a `b`, a whole number an `x`, another number a `d`, a text an `s`, an array an
/// `av`, a dictionary an `a{sv}`; nothing is an empty signature `g`. False when the bus library refuses (text that
/// isn't UTF-8).
bool append(sd_bus_message* message, const platform::Dictionary& dictionary);

/// Reads the a{sv} that comes next in a message from anyone: any basic type, arrays of any of these, dictionaries with
/// text keys. Nothing for what is too large, too deep or of another type.
std::optional<platform::Dictionary> readDictionary(sd_bus_message* message);

}  // namespace desktop
