#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>

#include "Tests/Desktop/Machine.h"
#include "Tests/Desktop/RecordingSink.h"

namespace desktop_tests {

using platform::Rect;

namespace {

TEST(DesktopScreens, AScreenThatIsCutInTwoIsReportedAndWhatIsOnItStays) {
  Machine& machine = desktopMachine();
  platform::port::WindowHost& windows = machine.backend().windows();
  const auto before = windows.screens();
  ASSERT_EQ(before.size(), 1U);
  EXPECT_EQ(before.front().scale, scale());
  const Rect whole = before.front().frame;
  int changes = 0;
  windows.setScreensChanged([&] { ++changes; });
  const int width = static_cast<int>(whole.width * scale()), height = static_cast<int>(whole.height * scale());
  outside(
      fmt::format("xrandr --setmonitor Left {0}/200x{1}/200+0+0 screen; "
                  "xrandr --setmonitor Right {0}/200x{1}/200+{0}+0 none",
                  width / 2, height));
  EXPECT_TRUE(machine.spin([&] { return changes > 0 && windows.screens().size() == 2; }));
  const auto cut = windows.screens();
  ASSERT_EQ(cut.size(), 2U);
  EXPECT_EQ(cut[0].frame, Rect(0, 0, whole.width / 2, whole.height));
  EXPECT_EQ(cut[1].frame, Rect(whole.width / 2, 0, whole.width / 2, whole.height));
  {
    RecordingSink sink;
    const Rect seen = {whole.width / 2 + 40, 50, 300, 200};
    const auto surface = windows.makeSurface(sink, shownAt({cut[1].frame.x + 40, 50, 300, 200}));
    EXPECT_TRUE(machine.spin([&] { return machine.frameOf(surface->nativeHandle()) == seen; }));
    outside(fmt::format("xdotool mousemove {} {}", (seen.x + 60) * scale(), (whole.height - 110) * scale()));
    EXPECT_TRUE(machine.spin([&] { return windows.pointerLocation() == platform::Point(seen.x + 60, 110); }));
  }
  outside("xrandr --delmonitor Left; xrandr --delmonitor Right");
  EXPECT_TRUE(machine.spin([&] { return windows.screens() == before; }));
  windows.setScreensChanged(nullptr);
}

TEST(DesktopScreens, ASurfaceIsPaintedWithAllPixelsOfItsScreen) {
  RecordingSink sink;
  const auto surface = desktopMachine().backend().windows().makeSurface(sink, shownAt({100, 100, 300, 200}));
  ASSERT_TRUE(desktopMachine().spin([&] { return sink.paints > 0; }));
  const auto bitmap = surface->snapshot();
  ASSERT_TRUE(bitmap);
  EXPECT_EQ(bitmap->width, std::lround(300 * scale()));
  EXPECT_EQ(bitmap->height, std::lround(200 * scale()));
  EXPECT_EQ(bitmap->scale, scale());
}

}  // namespace

}  // namespace desktop_tests
