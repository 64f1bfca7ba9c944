#pragma once

#include <QBackingStore>
#include <QRegion>
#include <QWindow>
#include <optional>

#include "Platform/Port/WindowHost.h"

class QDropEvent;
class QInputMethodQueryEvent;
class QMouseEvent;
class QWheelEvent;

namespace desktop {

class DesktopSurface;
class WindowServices;

/// The toolkit's window of a surface: paints, and turns events into reports. It outlives its surface until the event it
/// is in has been dealt with.
class SurfaceWindow final : public QWindow {
 public:
  SurfaceWindow(DesktopSurface& surface, platform::port::SurfaceSink& sink, WindowServices& services);

  /// The surface is gone: off the screen, and nothing more is reported.
  void detach();
  platform::port::SurfaceSink* sink() const { return sink_; }

  void setLook(bool transparent, double cornerRadius);
  /// Cuts the window off below this part of its height.
  void setRevealed(double part);
  void invalidate(const QRect& dirty);
  std::optional<platform::Bitmap> snapshot();
  /// Reports that the left button came up, unless it is known to be up.
  void reportLeftUp();

 protected:
  bool event(QEvent* event) override;
  void exposeEvent(QExposeEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void moveEvent(QMoveEvent* event) override;

 private:
  void paint();
  void cutCorners(QPainter& painter) const;
  void updateShape();
  void reportButton(const QMouseEvent& event, bool down);
  void reportPointer(platform::port::PointerAction action, const QPointF& globalPosition, Qt::KeyboardModifiers held);
  void reportWheel(const QWheelEvent& event);
  void reportKey(const QKeyEvent& event);
  void reportDrag(QDropEvent& event);
  void answer(QInputMethodQueryEvent& event) const;

  DesktopSurface* surface_;
  platform::port::SurfaceSink* sink_;
  WindowServices& services_;
  QBackingStore store_;
  QRegion dirty_;
  bool transparent_ = false;
  double cornerRadius_ = 0;
  double revealed_ = 1;
  bool leftDown_ = false;
};

}  // namespace desktop
