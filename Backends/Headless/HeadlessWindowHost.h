#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "Backends/Headless/Faults.h"
#include "Backends/Headless/HeadlessLoop.h"
#include "Backends/Headless/HeadlessSurface.h"
#include "Backends/Headless/Journal.h"
#include "Platform/Port/WindowHost.h"

namespace headless {

/// Screens, the stack of surfaces and the focus: a window manager in memory. What it does is reported to the surfaces'
/// sinks at the loop's next turn, as a real one would.
class HeadlessWindowHost final : public platform::port::WindowHost {
 public:
  HeadlessWindowHost(HeadlessLoop& loop, Journal& journal, const Faults& faults);

  std::unique_ptr<platform::port::Surface> makeSurface(platform::port::SurfaceSink& sink,
                                                       const platform::port::SurfaceState& state) override;
  std::vector<platform::port::ScreenInfo> screens() const override { return screens_; }
  void setScreensChanged(std::function<void()> changed) override { screensChanged_ = std::move(changed); }
  platform::Point pointerLocation() const override { return pointer_; }

  /// Plugs screens in and out; reported at the next turn. One of 1440 x 900 points, with 24 points of panel at the top,
  /// at first.
  void setScreens(std::vector<platform::port::ScreenInfo> screens);

  /// Back to front, hidden ones included.
  std::vector<HeadlessSurface*> stack() const;
  /// Null when there is none. Borrowed until the window destroys it.
  HeadlessSurface* surfaceWithHandle(std::uint64_t handle) const;
  HeadlessSurface* surfaceOf(const platform::port::SurfaceSink& sink) const;
  /// The newest surface that is shown with this title, or null.
  HeadlessSurface* surfaceTitled(std::string_view title) const;
  HeadlessSurface* surfaceAt(platform::Point onScreen) const;
  HeadlessSurface* active() const { return active_; }

  // What the user does with the window manager; each is reported at the next turn.
  void userMoves(HeadlessSurface& surface, const platform::Rect& frame);
  void userActivates(HeadlessSurface& surface);
  /// Another application gets the focus.
  void userDeactivatesAll();
  void userMinimises(HeadlessSurface& surface, bool minimised = true);
  void userZooms(HeadlessSurface& surface, bool zoomed = true);
  void userKeepsAbove(HeadlessSurface& surface, bool above = true);
  void userCloses(HeadlessSurface& surface);

  /// Keeps reports of activation, frames, minimising and zooming back, as a slow window manager; false lets them go.
  void holdReports(bool hold);

 private:
  friend class HeadlessSurface;
  friend class HeadlessUser;
  friend class HeadlessBackend;
  using Report = std::function<void(platform::port::SurfaceSink&)>;
  void report(const HeadlessSurface& surface, Report what);
  void report(std::function<void()> delivery);
  void moveActivation(HeadlessSurface* to);
  void activateByPress(HeadlessSurface& surface);
  bool paintDirty();
  void changeFrame(HeadlessSurface& surface, const platform::Rect& frame);
  void changeMinimised(HeadlessSurface& surface, bool minimised);
  void changeZoomed(HeadlessSurface& surface, bool zoomed);
  void beginMove(HeadlessSurface& surface);
  void movePointer(platform::Point location);
  void leaveScreen(HeadlessSurface& surface);
  void restack(HeadlessSurface& surface, bool above, HeadlessSurface* sibling);
  void forget(HeadlessSurface& surface);
  platform::Rect visibleFrameFor(const platform::Rect& frame) const;

  HeadlessLoop& loop_;
  Journal& journal_;
  const Faults& faults_;
  std::vector<platform::port::ScreenInfo> screens_;
  std::function<void()> screensChanged_;
  std::vector<HeadlessSurface*> surfaces_;  ///< back to front within a level
  HeadlessSurface* active_ = nullptr;
  platform::Point pointer_;
  bool leftButtonDown_ = false;
  HeadlessSurface* under_ = nullptr;   ///< got the last move
  HeadlessSurface* grab_ = nullptr;    ///< has the pointer while a button is held
  HeadlessSurface* moving_ = nullptr;  ///< moved by the machine with the pointer
  platform::Point moveOffset_;         ///< from the pointer to the origin of what is moved
  bool holding_ = false;
  std::vector<std::function<void()>> held_;
  std::uint64_t lastHandle_ = 0;
  std::function<void(HeadlessSurface&, bool endComposition)> textInputChanged_;
};

}  // namespace headless
