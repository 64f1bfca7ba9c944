#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/Export.h"

namespace platform {

/// A stretch of text in UTF-16 units.
struct NSRange {
  std::uint64_t location = 0;
  std::uint64_t length = 0;
  constexpr std::uint64_t end() const { return location + length; }
  friend constexpr bool operator==(const NSRange&, const NSRange&) = default;
};

/// Ill-formed sequences become U+FFFD.
PLATFORM_EXPORT std::u16string utf16(std::string_view utf8);
/// Lone surrogates become U+FFFD.
PLATFORM_EXPORT std::string utf8(std::u16string_view utf16);

/// Boundaries of user-perceived characters (UAX #29 extended grapheme clusters) and words; offsets in UTF-16 units,
/// clamped to the text. Each returns the next boundary in its direction, the text's end or start at last.
PLATFORM_EXPORT std::size_t nextCharacter(std::u16string_view text, std::size_t at);
PLATFORM_EXPORT std::size_t previousCharacter(std::u16string_view text, std::size_t at);
/// The end of the word at or after `at`.
PLATFORM_EXPORT std::size_t nextWordEnd(std::u16string_view text, std::size_t at);
/// The start of the word at or before `at`.
PLATFORM_EXPORT std::size_t previousWordStart(std::u16string_view text, std::size_t at);
/// The word (or stretch of blanks, or single symbol) that a double click at `at` selects.
PLATFORM_EXPORT NSRange wordAround(std::u16string_view text, std::size_t at);

}  // namespace platform
