#pragma once

#include <string>
#include <string_view>

#include "Platform/AppKit/NSAttributedString.h"
#include "Platform/Export.h"

namespace platform {

/// The range cut to the text and widened to whole surrogate pairs; an empty one in a pair moves to the pair's start.
PLATFORM_EXPORT NSRange clampedRange(std::u16string_view text, NSRange range);
/// The paragraph around `at` with its newline.
PLATFORM_EXPORT NSRange paragraphAround(std::u16string_view text, std::uint64_t at);
/// The smallest stretch of `after` that replaced something in `before`.
PLATFORM_EXPORT NSRange changedRange(std::u16string_view before, std::u16string_view after);
/// Text from outside as a text box keeps it: every line end is "\n"; other control characters but the tab are dropped.
PLATFORM_EXPORT std::u16string plainText(std::string_view utf8);

}  // namespace platform
