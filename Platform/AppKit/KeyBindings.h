#pragma once

#include <string>
#include <string_view>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/Export.h"

namespace platform {

/// The editing command ("moveLeft:", "selectAll:") that a desktop text box binds to a key-down event; empty when none
/// is. Letters go by what the key types where that is a Latin letter, else by the key's place (a Hangul layout). Caps
/// Lock, keypad and function flags don't matter.
PLATFORM_EXPORT std::string_view editingCommandFor(const NSEvent& event);

/// The text that a key-down event types: nothing with Control, Option or Command held, no control characters.
PLATFORM_EXPORT std::u16string typedText(const NSEvent& event);

}  // namespace platform
