#pragma once

#include <xcb/xproto.h>

#include <QTimer>

#include "Backends/Desktop/SurfaceWindow.h"
#include "Backends/Desktop/WindowManagerFence.h"
#include "Platform/Port/WindowHost.h"

namespace desktop {

class DesktopWindowHost;

/// A window without the window manager's frame, so that a frame that is set is the frame that is shown.
class DesktopSurface final : public platform::port::Surface {
 public:
  DesktopSurface(DesktopWindowHost& host, WindowServices& services, platform::port::SurfaceSink& sink,
                 const platform::port::SurfaceState& state);
  ~DesktopSurface() override;
  DesktopSurface(const DesktopSurface&) = delete;
  DesktopSurface& operator=(const DesktopSurface&) = delete;

  void apply(const platform::port::SurfaceState& state) override;
  void restack(bool above, platform::port::Surface* sibling) override;
  void setParent(platform::port::Surface* parent) override;
  void activate() override;
  void setMinimised(bool minimised) override;
  void setZoomed(bool zoomed) override;
  bool beginMove() override;
  void invalidate(const platform::Rect& fromTopLeft) override;
  void setCursor(platform::port::Cursor cursor) override;
  void textInputChanged(bool endComposition) override;
  std::optional<platform::Bitmap> snapshot() override;
  std::uint64_t nativeHandle() const override { return id_; }

  SurfaceWindow& window() { return *window_; }
  xcb_window_t id() const { return id_; }
  platform::port::SurfaceSink& sink() { return *window_->sink(); }
  bool isShown() const { return state_.visible; }
  /// Whether the window manager has shown it, too.
  bool isManaged() const;
  /// Whether it belongs above normal windows.
  bool floats() const { return state_.level >= kFloatingLevel; }
  bool isMoving() const { return moveTimer_.isActive() || moveEnds_; }

  /// The toolkit says that the window was moved or resized.
  void geometryChanged();
  /// The toolkit says that the window was minimised, zoomed or restored.
  void stateChanged();
  /// The window manager wrote down whether it keeps the window above others, or something else of its state.
  void keptAboveChanged();
  /// The window manager has done what it was asked for before a ticket was issued.
  void fencePassed();
  /// Reports the end of a move that the window manager may still be at the last steps of.
  void endMove();

 private:
  static constexpr int kFloatingLevel = 3;

  void applyFrame();
  void requestStates();
  void tellCaret();
  void applyLimits();
  void show();
  void hide();
  std::optional<QRect> shownFrame() const;
  /// What the server says of the window isn't believed until the window manager has done what was asked of it.
  void await();
  void settle();
  void reportFrame();
  void reportStates();
  void followMove();
  void refuseMinimising();
  void zoomAlone(bool zoomed);

  DesktopWindowHost& host_;
  WindowServices& services_;
  SurfaceWindow* window_;  ///< owned until `detach`, then by the toolkit
  xcb_window_t id_ = 0;
  xcb_window_t parent_ = 0;
  platform::port::SurfaceState state_;
  QRect requested_;
  QRect unzoomed_;  ///< before we zoomed it ourselves
  WindowManagerFence::Ticket ticket_ = 0;
  WindowManagerFence::Ticket showTicket_ = 0;
  bool awaits_ = false;
  bool stateDoubtful_ = false;  ///< whether it is minimised or zoomed is to be found out
  /// Off the screen with the end of the turn: hidden and shown again in one, it stays. A window manager that is still
  /// at the showing may answer the two with hiding for good, or not at all, so hiding waits for it.
  QTimer hideTimer_;
  QTimer moveTimer_;
  bool moveEnds_ = false;
  bool minimised_ = false;
  bool zoomed_ = false;
  bool levelShown_ = false;  ///< the window manager has shown the level that was asked for last
  bool textEnabled_ = false;
};

}  // namespace desktop
