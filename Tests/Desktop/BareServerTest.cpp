#include <gtest/gtest.h>

#include "Tests/Desktop/Machine.h"
#include "Tests/Desktop/RecordingSink.h"

namespace desktop_tests {

using platform::Rect;

namespace {

/// A server without a window manager: what only that could do is done by us, or reported as not done.
class BareServer : public testing::Test {
 protected:
  BareServer() {
    surface_ = desktopMachine().backend().windows().makeSurface(sink_, shownAt(kFrame));
    EXPECT_TRUE(desktopMachine().spin([&] { return sink_.paints > 0; }));
  }
  bool isShownAndReported(const Rect& frame) {
    return desktopMachine().frameOf(surface_->nativeHandle()) == frame && !sink_.frames.empty() &&
           sink_.frames.back() == frame;
  }

  static constexpr Rect kFrame = {100, 100, 300, 200};
  RecordingSink sink_;
  std::unique_ptr<platform::port::Surface> surface_;
};

TEST_F(BareServer, ZoomingFillsTheScreenAndComesBack) {
  const Rect screen = desktopMachine().backend().windows().screens().front().visibleFrame;
  surface_->setZoomed(true);
  EXPECT_TRUE(desktopMachine().spin([&] { return isShownAndReported(screen); }));
  surface_->setZoomed(false);
  EXPECT_TRUE(desktopMachine().spin([&] { return isShownAndReported(kFrame); }));
}

TEST_F(BareServer, AMinimisedWindowIsReportedAsShownAgainSinceNobodyCouldBringItBack) {
  sink_.minimised = true;
  surface_->setMinimised(true);
  EXPECT_TRUE(desktopMachine().spin([&] { return !sink_.minimised; }));
  EXPECT_EQ(desktopMachine().frameOf(surface_->nativeHandle()), kFrame);
}

TEST_F(BareServer, TheMachineMovesNoWindows) {
  EXPECT_FALSE(surface_->beginMove());
}

}  // namespace

}  // namespace desktop_tests
