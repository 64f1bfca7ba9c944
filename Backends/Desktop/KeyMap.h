#pragma once

#include <cstdint>
#include <optional>

namespace desktop {

/// The virtual key code of a hardware key, by its place on the keyboard; nothing for keys that have none (media,
/// power). X keycodes are those of evdev plus 8.
std::optional<std::uint16_t> virtualKeyCode(std::uint32_t xKeycode);

/// Modifier flags of a core protocol state mask: Shift, Caps Lock, Control, Mod1 as Option, Mod4 as Command.
std::uint64_t modifierFlags(std::uint32_t state);
/// The flags that a key event carries: the plain-key flag, what is held, and what an arrow key adds.
std::uint64_t keyModifierFlags(std::uint32_t state, std::uint16_t keyCode);

}  // namespace desktop
