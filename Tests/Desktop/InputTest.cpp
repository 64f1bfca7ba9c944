#include <fmt/format.h>

#include <algorithm>

#include "Tests/Desktop/InputFixture.h"

namespace desktop_tests {

using platform::port::PointerAction;

namespace {

TEST_F(DesktopInput, EachHardwareKeyArrivesOnceWithItsVirtualCodeAndModifiers) {
  struct Row {
    const char* name;
    const char* press;  // X keycodes are evdev codes plus 8
    std::uint16_t code;
    std::uint64_t modifiers;
    const char* characters;
  };
  const Row rows[] = {
      {"a", "38", 0, 0x100, "a"},
      {"Shift+a", "shift+38", 0, 0x20100, "A"},
      {"Control+Return", "ctrl+36", 36, 0x40100, "\r"},
      {"Option+Return", "alt+36", 36, 0x80100, "\r"},
      {"Super+Shift+b", "super+shift+56", 11, 0x120100, "B"},
      {"Backspace", "22", 51, 0x100, "\x7f"},
      {"Left", "113", 123, 0xA00100, ""},
      {"Shift+Down", "shift+116", 125, 0xA20100, ""},
      {"keypad Enter", "104", 76, 0x100, "\r"},
      {"F5", "71", 96, 0x100, ""},
      {"Delete", "119", 117, 0x100, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    sink_.keys.clear();
    outside(fmt::format("xdotool key {}", row.press));
    const auto isIt = [&](bool down) {
      return std::count_if(sink_.keys.begin(), sink_.keys.end(),
                           [&](const auto& key) { return key.keyCode == row.code && key.down == down; });
    };
    EXPECT_TRUE(soon([&] { return isIt(false) > 0; }));
    EXPECT_EQ(isIt(true), 1);
    EXPECT_EQ(isIt(false), 1);
    const auto key = std::find_if(sink_.keys.begin(), sink_.keys.end(),
                                  [&](const auto& each) { return each.keyCode == row.code && each.down; });
    if (key == sink_.keys.end()) continue;
    EXPECT_EQ(key->modifiers, row.modifiers);
    EXPECT_EQ(key->characters, row.characters);
  }
}

TEST_F(DesktopInput, AHeldKeyRepeatsWithoutReleases) {
  outside("xset r rate 150 50; xdotool keydown 38 sleep 0.4 keyup 38; xset r rate 660 25");
  EXPECT_TRUE(soon([&] { return !sink_.keys.empty() && !sink_.keys.back().down; }));
  EXPECT_EQ(std::count_if(sink_.keys.begin(), sink_.keys.end(), [](const auto& key) { return !key.down; }), 1);
  EXPECT_GT(sink_.keys.size(), 4U);
  EXPECT_FALSE(sink_.keys.front().repeated);
  EXPECT_TRUE(sink_.keys[1].repeated);
}

TEST_F(DesktopInput, ThePointerIsReportedInScreenPointsFromTheBottomLeft) {
  outside("xdotool mousemove " + rootPixels({300, 250}) + " click 1 click 3 click 4");
  EXPECT_TRUE(soon([&] { return !sink_.wheels.empty() && sink_.count(PointerAction::rightUp) == 1; }));
  EXPECT_EQ(sink_.count(PointerAction::leftDown), 1U);
  EXPECT_EQ(sink_.count(PointerAction::leftUp), 1U);
  EXPECT_EQ(sink_.pointers.back().location, platform::Point(300, 250));
  EXPECT_GT(sink_.wheels.front().deltaY, 0) << "away from the user scrolls towards the start";
}

TEST_F(DesktopInput, TheWindowManagerMovesTheWindowAndOneReleaseEndsIt) {
  bool began = false;
  sink_.onPointer = [&](const auto& input) {
    if (input.action == PointerAction::leftDown) began = surface_->beginMove();
  };
  outside("xdotool mousemove " + rootPixels({300, 250}) +
          " mousedown 1 sleep 0.2 mousemove_relative 10 10 sleep 0.1 mousemove_relative 30 20 sleep 0.1 mouseup 1");
  EXPECT_TRUE(began);
  EXPECT_TRUE(soon([&] { return sink_.count(PointerAction::leftUp) > 0; }));
  EXPECT_EQ(sink_.count(PointerAction::leftUp), 1U);
  ASSERT_FALSE(sink_.frames.empty());
  EXPECT_EQ(sink_.frames.back(), desktopMachine().frameOf(surface_->nativeHandle()));
  EXPECT_NE(sink_.frames.back().x, 200);
  EXPECT_TRUE(sink_.active) << "the application stays active over the move";
}

}  // namespace

}  // namespace desktop_tests
