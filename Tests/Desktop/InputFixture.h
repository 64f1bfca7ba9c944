#pragma once

#include <gtest/gtest.h>

#include "Tests/Desktop/Machine.h"
#include "Tests/Desktop/RecordingSink.h"

namespace desktop_tests {

/// Keys and pointer of a real server, pressed by another process.
class DesktopInput : public testing::Test {
 protected:
  static constexpr platform::Rect kFrame = {200, 200, 400, 300};

  DesktopInput() {
    platform::port::SurfaceState state = shownAt(kFrame);
    state.title = "Input";
    surface_ = desktopMachine().backend().windows().makeSurface(sink_, state);
    surface_->activate();
    // The window manager may still be at work on the window of the case before.
    EXPECT_TRUE(soon([&] {
      return sink_.active && outside("xdotool getwindowfocus || true") == std::to_string(surface_->nativeHandle());
    }));
  }

  static bool soon(const std::function<bool()>& condition) { return desktopMachine().spin(condition); }

  RecordingSink sink_;
  std::unique_ptr<platform::port::Surface> surface_;
};

}  // namespace desktop_tests
