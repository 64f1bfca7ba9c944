#include "Backends/Desktop/KeyMap.h"

#include <xcb/xproto.h>

#include <array>

namespace desktop {

namespace {

constexpr std::uint8_t kNone = 255;
constexpr std::uint32_t kEvdevOffset = 8;

// clang-format off
/// Indexed by evdev code, ten to a row; names of the keys on a US board in the comments.
constexpr std::array<std::uint8_t, 191> kByEvdevCode = {
    kNone, 53, 18, 19, 20, 21, 23, 22, 26, 28,         //   0: – Esc 1 2 3 4 5 6 7 8
    25, 29, 27, 24, 51, 48, 12, 13, 14, 15,            //  10: 9 0 - = Backspace Tab Q W E R
    17, 16, 32, 34, 31, 35, 33, 30, 36, 59,            //  20: T Y U I O P [ ] Return LeftCtrl
    0, 1, 2, 3, 5, 4, 38, 40, 37, 41,                  //  30: A S D F G H J K L ;
    39, 50, 56, 42, 6, 7, 8, 9, 11, 45,                //  40: ' ` LeftShift \ Z X C V B N
    46, 43, 47, 44, 60, 67, 58, 49, 57, 122,           //  50: M , . / RightShift KP* LeftAlt Space CapsLock F1
    120, 99, 118, 96, 97, 98, 100, 101, 109, 71,       //  60: F2 … F10 NumLock
    107, 89, 91, 92, 78, 86, 87, 88, 69, 83,           //  70: ScrollLock KP7 KP8 KP9 KP- KP4 KP5 KP6 KP+ KP1
    84, 85, 82, 65, kNone, 102, 10, 103, 111, 94,      //  80: KP2 KP3 KP0 KP. – Zenkaku ISO F11 F12 Ro
    104, 104, 104, 104, 102, 95, 76, 62, 75, 105,      //  90: Katakana Hiragana Henkan Kana Muhenkan KP, KPEnter RightCtrl KP/ Print
    61, kNone, 115, 126, 116, 123, 124, 119, 125, 121, // 100: RightAlt – Home Up PageUp Left Right End Down PageDown
    114, 117, kNone, kNone, kNone, kNone, kNone, 81, kNone, 113, // 110: Insert Delete … KP= – Pause
    kNone, 95, 104, 102, 93, 55, 54, 110, kNone, kNone,          // 120: – KP, Hangul Hanja Yen LeftMeta RightMeta Menu
    kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone, 114, kNone,  // 130: … Help
    kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone,
    kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone,
    kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone,
    kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone,
    kNone, kNone, kNone, 105, 107, 113, 106, 64, 79, 80,         // 180: … F13 … F19
    90,                                                          // 190: F20
};
// clang-format on

constexpr std::uint64_t kPlainKey = 0x100, kCapsLock = 0x10000, kShift = 0x20000, kControl = 0x40000, kOption = 0x80000,
                        kCommand = 0x100000, kNumericPad = 0x200000, kFunction = 0x800000;
constexpr std::uint16_t kFirstArrow = 123, kLastArrow = 126;

}  // namespace

std::optional<std::uint16_t> virtualKeyCode(std::uint32_t xKeycode) {
  if (xKeycode < kEvdevOffset || xKeycode - kEvdevOffset >= kByEvdevCode.size()) return std::nullopt;
  const std::uint8_t code = kByEvdevCode[xKeycode - kEvdevOffset];
  return code == kNone ? std::nullopt : std::optional<std::uint16_t>(code);
}

std::uint64_t modifierFlags(std::uint32_t state) {
  std::uint64_t flags = 0;
  if (state & XCB_MOD_MASK_LOCK) flags |= kCapsLock;
  if (state & XCB_MOD_MASK_SHIFT) flags |= kShift;
  if (state & XCB_MOD_MASK_CONTROL) flags |= kControl;
  if (state & XCB_MOD_MASK_1) flags |= kOption;
  if (state & XCB_MOD_MASK_4) flags |= kCommand;
  return flags;
}

std::uint64_t keyModifierFlags(std::uint32_t state, std::uint16_t keyCode) {
  const bool isArrow = keyCode >= kFirstArrow && keyCode <= kLastArrow;
  return kPlainKey | modifierFlags(state) | (isArrow ? kNumericPad | kFunction : 0);
}

}  // namespace desktop
