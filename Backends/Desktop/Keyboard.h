#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Backends/Desktop/XServer.h"
#include "Platform/Port/WindowHost.h"

namespace desktop {

/// What the keys of the user's keyboard layout mean, read from the X server.
class Keyboard {
 public:
  explicit Keyboard(XServer& x);

  /// Reads the layout again, after the server said that it changed.
  void refresh();
  /// The key as the model knows it. `state` is a core protocol state mask; nothing is known of keys without key code.
  std::optional<platform::port::KeyInput> input(std::uint8_t keycode, std::uint16_t state, bool down) const;
  /// The hardware key that makes a key symbol; 0 when the layout has none.
  std::uint8_t keycodeOf(std::uint32_t keysym) const;

 private:
  std::uint32_t symbol(std::uint8_t keycode, std::size_t column) const;
  std::uint32_t symbolFor(std::uint8_t keycode, std::uint16_t state) const;

  XServer& x_;
  std::uint8_t firstKeycode_ = 0;
  std::size_t columns_ = 0;
  std::vector<std::uint32_t> symbols_;
};

}  // namespace desktop
