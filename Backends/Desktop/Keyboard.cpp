#include "Backends/Desktop/Keyboard.h"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>

#include "Backends/Desktop/KeyMap.h"
#include "Backends/Desktop/XReply.h"

namespace desktop {

namespace {

constexpr std::uint16_t kNumLock = XCB_MOD_MASK_2, kThirdLevel = XCB_MOD_MASK_5;

bool isKeypad(std::uint32_t symbol) {
  return symbol >= XKB_KEY_KP_Space && symbol <= XKB_KEY_KP_Equal;
}

bool isLetter(std::uint32_t symbol) {
  return xkb_keysym_to_upper(symbol) != xkb_keysym_to_lower(symbol);
}

std::string textOf(std::uint32_t symbol) {
  if (symbol == XKB_KEY_BackSpace) return "\x7f";
  if (symbol == XKB_KEY_Delete) return {};
  std::array<char, 8> buffer{};
  const int size = xkb_keysym_to_utf8(symbol, buffer.data(), buffer.size());
  return size > 1 ? std::string(buffer.data()) : std::string();
}

/// Control and a letter (or one of @ [ \ ] ^ _) make a control character.
std::string withControl(const std::string& text) {
  if (text.size() != 1) return text;
  const char character = text.front();
  const bool makesControl = (character >= '@' && character <= '_') || (character >= 'a' && character <= 'z');
  return makesControl ? std::string(1, static_cast<char>(character & 0x1F)) : text;
}

}  // namespace

Keyboard::Keyboard(XServer& x) : x_(x) {
  refresh();
}

void Keyboard::refresh() {
  const xcb_setup_t* setup = xcb_get_setup(x_.connection());
  firstKeycode_ = setup->min_keycode;
  const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
  const auto cookie = xcb_get_keyboard_mapping(x_.connection(), firstKeycode_, count);
  const auto reply = owned(xcb_get_keyboard_mapping_reply(x_.connection(), cookie, nullptr));
  if (!reply) return;
  columns_ = reply->keysyms_per_keycode;
  const xcb_keysym_t* first = xcb_get_keyboard_mapping_keysyms(reply.get());
  symbols_.assign(first, first + xcb_get_keyboard_mapping_keysyms_length(reply.get()));
}

std::uint32_t Keyboard::symbol(std::uint8_t keycode, std::size_t column) const {
  if (keycode < firstKeycode_ || column >= columns_) return XKB_KEY_NoSymbol;
  const std::size_t at = static_cast<std::size_t>(keycode - firstKeycode_) * columns_ + column;
  return at < symbols_.size() ? symbols_[at] : std::uint32_t{XKB_KEY_NoSymbol};
}

std::uint32_t Keyboard::symbolFor(std::uint8_t keycode, std::uint16_t state) const {
  // Columns: two levels of group one, two of group two, then the third and fourth level of group one.
  const bool secondGroup = ((state >> 13) & 3) == 1 && symbol(keycode, 2) != XKB_KEY_NoSymbol;
  std::size_t base = secondGroup ? 2 : 0;
  if (!secondGroup && (state & kThirdLevel) && symbol(keycode, 4) != XKB_KEY_NoSymbol) base = 4;
  const std::uint32_t plain = symbol(keycode, base);
  std::uint32_t shifted = symbol(keycode, base + 1);
  if (shifted == XKB_KEY_NoSymbol) shifted = xkb_keysym_to_upper(plain);
  bool wantsShifted = state & XCB_MOD_MASK_SHIFT;
  if (isKeypad(shifted) && (state & kNumLock)) wantsShifted = !wantsShifted;
  if (isLetter(plain) && (state & XCB_MOD_MASK_LOCK)) wantsShifted = !wantsShifted;
  return wantsShifted ? shifted : plain;
}

std::optional<platform::port::KeyInput> Keyboard::input(std::uint8_t keycode, std::uint16_t state, bool down) const {
  const auto code = virtualKeyCode(keycode);
  if (!code) return std::nullopt;
  platform::port::KeyInput input;
  input.down = down;
  input.keyCode = *code;
  input.modifiers = keyModifierFlags(state, *code);
  const std::string text = textOf(symbolFor(keycode, state));
  input.characters = state & XCB_MOD_MASK_CONTROL ? withControl(text) : text;
  constexpr std::uint16_t kModifiers = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4 | kThirdLevel;
  input.charactersIgnoringModifiers = textOf(symbolFor(keycode, state & static_cast<std::uint16_t>(~kModifiers)));
  return input;
}

std::uint8_t Keyboard::keycodeOf(std::uint32_t keysym) const {
  const auto found = std::find(symbols_.begin(), symbols_.end(), keysym);
  if (found == symbols_.end() || columns_ == 0) return 0;
  return static_cast<std::uint8_t>(firstKeycode_ + static_cast<std::size_t>(found - symbols_.begin()) / columns_);
}

}  // namespace desktop
