#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QScreen>
#include <QTimer>
#include <vector>

#include "Backends/Desktop/WindowManagerEvents.h"
#include "Backends/Desktop/WindowServices.h"
#include "Platform/Port/WindowHost.h"

class QWindow;

namespace desktop {

class DesktopSurface;

class DesktopWindowHost final : public platform::port::WindowHost {
 public:
  /// `identifier`: the desktop file's name without its suffix.
  DesktopWindowHost(std::string identifier, SelectionReader& selections);
  ~DesktopWindowHost() override;
  DesktopWindowHost(const DesktopWindowHost&) = delete;
  DesktopWindowHost& operator=(const DesktopWindowHost&) = delete;

  std::unique_ptr<platform::port::Surface> makeSurface(platform::port::SurfaceSink& sink,
                                                       const platform::port::SurfaceState& state) override;
  std::vector<platform::port::ScreenInfo> screens() const override;
  void setScreensChanged(std::function<void()> changed) override { screensChanged_ = std::move(changed); }
  platform::Point pointerLocation() const override;

  void add(DesktopSurface& surface) { surfaces_.push_back(&surface); }
  void remove(DesktopSurface& surface);
  /// Puts `surface` directly above or below `sibling` (null: all).
  void restack(DesktopSurface& surface, bool above, DesktopSurface* sibling);
  /// The window manager takes a surface anew and puts it where it likes.
  void forgetPlace(const DesktopSurface& surface);
  /// Asks for the focus, as soon as the window manager has shown the surface. One that is asked for later wins.
  void activate(DesktopSurface& surface);
  /// Reports which surface has the focus now, if that is news. The one that gets it hears before the one that lost it,
  /// so that the application doesn't seem to resign in between.
  void updateActive();

 private:
  DesktopSurface* find(xcb_window_t window) const;
  bool exists(const DesktopSurface* surface) const;
  void restackAlone(DesktopSurface& surface, bool above, const DesktopSurface* sibling);
  void restackBeside(DesktopSurface& surface, bool above, const DesktopSurface& sibling);
  void raise(DesktopSurface& surface);
  void restacked();
  bool floats(xcb_window_t window);
  void refreshOrder();
  void watchScreen(QScreen* screen);
  void reportScreens();
  void fencePassed();
  void activateIfManaged();

  WindowServices services_;
  WindowManagerEvents windowManager_;
  std::vector<DesktopSurface*> surfaces_;
  DesktopSurface* active_ = nullptr;
  DesktopSurface* activating_ = nullptr;  ///< waits for the window manager
  std::vector<xcb_window_t> order_;       ///< from the lowest to the highest, those of others too
  QElapsedTimer sinceRestack_;
  WindowManagerFence::Ticket restackTicket_ = 0;
  QObject context_;
  QTimer screensTimer_;
  std::function<void()> screensChanged_;
};

}  // namespace desktop
