#include "Backends/Desktop/DesktopSurface.h"

#include <private/qguiapplication_p.h>
#include <private/qhighdpiscaling_p.h>
#include <qpa/qplatforminputcontext.h>
#include <qpa/qplatformintegration.h>

#include <QCursor>
#include <QGuiApplication>
#include <QInputMethod>
#include <algorithm>
#include <cmath>

#include "Backends/Desktop/Coordinates.h"
#include "Backends/Desktop/DesktopWindowHost.h"
#include "Backends/Desktop/WindowServices.h"

namespace desktop {

using platform::port::Cursor;
using platform::port::SurfaceState;

namespace {

constexpr int kMoveStepMilliseconds = 10;
constexpr int kUnlimited = (1 << 24) - 1;  // what the toolkit takes for no limit

Qt::CursorShape shapeOf(Cursor cursor) {
  switch (cursor) {
    case Cursor::arrow:
      return Qt::ArrowCursor;
    case Cursor::text:
      return Qt::IBeamCursor;
    case Cursor::resizeHorizontal:
      return Qt::SizeHorCursor;
    case Cursor::resizeVertical:
      return Qt::SizeVerCursor;
    case Cursor::resizeRising:
      return Qt::SizeBDiagCursor;
    case Cursor::resizeFalling:
      return Qt::SizeFDiagCursor;
  }
  return Qt::ArrowCursor;
}

QRect outward(const platform::Rect& rect) {
  return QRectF(rect.x, rect.y, rect.width, rect.height).toAlignedRect();
}

}  // namespace

DesktopSurface::DesktopSurface(DesktopWindowHost& host, WindowServices& services, platform::port::SurfaceSink& sink,
                               const SurfaceState& state)
    : host_(host), services_(services), window_(new SurfaceWindow(*this, sink, services)), state_(state) {
  hideTimer_.setSingleShot(true);
  hideTimer_.setInterval(0);
  QObject::connect(&hideTimer_, &QTimer::timeout, window_, [this] { hide(); });
  moveTimer_.setInterval(kMoveStepMilliseconds);
  QObject::connect(&moveTimer_, &QTimer::timeout, window_, [this] { followMove(); });
  applyFrame();
  window_->create();
  id_ = static_cast<xcb_window_t>(window_->winId());
  host_.add(*this);
  services_.x.setClass(id_, services_.identifier);
  services_.x.setNormalType(id_);
  services_.x.setFunctions(id_, state_.resizable, state_.minimisable);
  window_->setTitle(QString::fromStdString(state_.title));
  window_->setLook(state_.transparent, state_.cornerRadius);
  window_->setRevealed(state_.revealed);
  window_->setOpacity(state_.alpha);
  if (state_.visible) show();
  services_.x.flush();
}

DesktopSurface::~DesktopSurface() {
  host_.remove(*this);
  window_->detach();
  services_.x.flush();
}

void DesktopSurface::apply(const SurfaceState& state) {
  const SurfaceState before = std::exchange(state_, state);
  if (state.title != before.title) window_->setTitle(QString::fromStdString(state.title));
  if (state.resizable != before.resizable || state.minimisable != before.minimisable)
    services_.x.setFunctions(id_, state.resizable, state.minimisable);
  if (state.resizable != before.resizable) applyLimits();
  if (state.frame != before.frame) applyFrame();
  window_->setLook(state.transparent, state.cornerRadius);
  window_->setRevealed(state.revealed);
  if (state.alpha != before.alpha) window_->setOpacity(state.alpha);
  if (state.visible && !before.visible)
    show();
  else if (!state.visible && before.visible)
    hideTimer_.start();
  else if (state.visible &&
           (state.level != before.level || state.skipsTaskbar != before.skipsTaskbar || state.modal != before.modal))
    requestStates();
  services_.x.flush();
}

void DesktopSurface::applyLimits() {
  window_->setMinimumSize(state_.resizable ? QSize(1, 1) : requested_.size());
  window_->setMaximumSize(state_.resizable ? QSize(kUnlimited, kUnlimited) : requested_.size());
}

void DesktopSurface::applyFrame() {
  requested_ = toToolkit(state_.frame);
  applyLimits();
  window_->setGeometry(requested_);
  tellCaret();
  await();
}

/// The caret moves with its window.
void DesktopSurface::tellCaret() {
  if (textEnabled_ && QGuiApplication::focusObject() == window_)
    QGuiApplication::inputMethod()->update(Qt::ImCursorRectangle);
}

void DesktopSurface::show() {
  // The window manager minimises what belongs to a window together with it; hidden since, it comes back as it was.
  minimised_ = false;
  if (window_->windowStates() & Qt::WindowMinimized)
    window_->setWindowStates(window_->windowStates() & ~Qt::WindowMinimized);
  host_.forgetPlace(*this);
  hideTimer_.stop();
  window_->setVisible(true);
  // The window manager forgets these when a window is hidden, and the toolkit writes some of them anew.
  window_->setGeometry(requested_);
  services_.x.setTransientFor(id_, parent_);
  services_.x.setFunctions(id_, state_.resizable, state_.minimisable);
  requestStates();
  levelShown_ = !floats();  // where windows begin
  showTicket_ = ticket_;
}

bool DesktopSurface::isManaged() const {
  return state_.visible && services_.fence.hasPassed(showTicket_);
}

void DesktopSurface::hide() {
  if (!state_.visible && services_.fence.hasPassed(showTicket_)) window_->setVisible(false);
}

void DesktopSurface::requestStates() {
  levelShown_ = false;
  await();
  services_.x.changeState(id_, "_NET_WM_STATE_ABOVE", floats());
  services_.x.changeState(id_, "_NET_WM_STATE_SKIP_TASKBAR", state_.skipsTaskbar);
  services_.x.changeState(id_, "_NET_WM_STATE_MODAL", state_.modal);
}

std::optional<QRect> DesktopSurface::shownFrame() const {
  const auto pixels = services_.x.geometry(id_);
  if (!pixels) return std::nullopt;
  // A frame that was asked for is exact, whatever the rounding between points and pixels.
  if (QHighDpi::toNativeWindowGeometry(requested_, window_) == *pixels) return requested_;
  return QHighDpi::fromNativeWindowGeometry(*pixels, static_cast<const QWindow*>(window_));
}

void DesktopSurface::await() {
  ticket_ = services_.fence.issue();
  awaits_ = true;
}

void DesktopSurface::geometryChanged() {
  // What arrives before may be an answer to an older request, or half of the new one.
  if (!awaits_) reportFrame();
}

void DesktopSurface::fencePassed() {
  if (!awaits_ || !services_.fence.hasPassed(ticket_)) return;
  awaits_ = false;
  const QPointer<SurfaceWindow> window(window_);
  hide();
  reportStates();
  if (window && window->sink()) settle();
  if (window && window->sink()) keptAboveChanged();
  if (window && window->sink()) endMove();
}

void DesktopSurface::settle() {
  if (!state_.visible || minimised_) return;
  const auto shown = shownFrame();
  if (shown && *shown == requested_ && window_->geometry() != requested_)
    window_->setGeometry(requested_);  // shown right, but the toolkit lost track while the window was hidden
  else
    reportFrame();
}

/// Compares with what the server says, and reports a difference.
void DesktopSurface::reportFrame() {
  if (!state_.visible || minimised_) return;
  const auto shown = shownFrame();
  if (!shown) return;
  const platform::Rect frame = toModel(QRectF(*shown));
  if (*shown == requested_ && toToolkit(state_.frame) == requested_) return;
  requested_ = *shown;
  state_.frame = frame;
  const QPointer<SurfaceWindow> window(window_);
  sink().surfaceFrameChanged(frame);
  if (window && window->sink()) tellCaret();
}

void DesktopSurface::stateChanged() {
  stateDoubtful_ = true;
  if (!awaits_) reportStates();
}

/// Also where nothing changed: the window manager may have refused what was asked of it.
void DesktopSurface::reportStates() {
  if (!stateDoubtful_ || !state_.visible || !services_.x.hasWindowManager()) return;
  stateDoubtful_ = false;
  minimised_ = services_.x.isMinimised(id_);
  const bool zoomed = services_.x.hasState(id_, "_NET_WM_STATE_MAXIMIZED_HORZ") &&
                      services_.x.hasState(id_, "_NET_WM_STATE_MAXIMIZED_VERT");
  const bool zoomedChanged = std::exchange(zoomed_, zoomed) != zoomed;
  const QPointer<SurfaceWindow> window(window_);
  platform::port::SurfaceSink& reported = sink();
  reported.surfaceMinimised(minimised_);
  if (zoomedChanged && window && window->sink()) reported.surfaceZoomed(zoomed);
}

void DesktopSurface::keptAboveChanged() {
  // While a request is on its way, or the window off the screen, the property tells nothing of the user.
  if (awaits_ || !state_.visible || minimised_) return;
  const bool above = services_.x.hasState(id_, "_NET_WM_STATE_ABOVE");
  if (above == floats()) {
    levelShown_ = true;
  } else if (levelShown_) {
    state_.level = above ? kFloatingLevel : 0;
    sink().surfaceKeptAbove(above);
  }
}

void DesktopSurface::restack(bool above, Surface* sibling) {
  auto* other = dynamic_cast<DesktopSurface*>(sibling);
  if (sibling && !other) return;  // a dialog that has its own mind about its place
  host_.restack(*this, above, other);
  services_.x.flush();
}

void DesktopSurface::setParent(Surface* parent) {
  parent_ = parent ? static_cast<xcb_window_t>(parent->nativeHandle()) : 0;
  services_.x.setTransientFor(id_, parent_);
  services_.x.flush();
}

void DesktopSurface::activate() {
  if (!state_.visible) return;
  if (window_->windowStates() & Qt::WindowMinimized) setMinimised(false);
  host_.activate(*this);
}

void DesktopSurface::setMinimised(bool minimised) {
  if (!services_.x.hasWindowManager()) return refuseMinimising();
  window_->setWindowStates(minimised ? window_->windowStates() | Qt::WindowMinimized
                                     : window_->windowStates() & ~Qt::WindowMinimized);
  stateDoubtful_ = true;
  await();
}

void DesktopSurface::setZoomed(bool zoomed) {
  if (!services_.x.hasWindowManager()) return zoomAlone(zoomed);
  window_->setWindowStates(zoomed ? window_->windowStates() | Qt::WindowMaximized
                                  : window_->windowStates() & ~Qt::WindowMaximized);
  stateDoubtful_ = true;
  await();
}

/// Without a window manager nobody could bring the window back.
void DesktopSurface::refuseMinimising() {
  QTimer::singleShot(0, window_, [this] {
    if (window_->sink()) sink().surfaceMinimised(false);
  });
}

void DesktopSurface::zoomAlone(bool zoomed) {
  if (std::exchange(zoomed_, zoomed) == zoomed) return;
  if (zoomed) unzoomed_ = requested_;
  window_->setGeometry(zoomed ? window_->screen()->availableGeometry() : unzoomed_);
  await();
}

bool DesktopSurface::beginMove() {
  if (!services_.x.supports("_NET_WM_MOVERESIZE") || !window_->startSystemMove()) return false;
  moveTimer_.start();
  return true;
}

/// The window manager takes the pointer during its move and tells at the end, or at each step; the server knows always.
void DesktopSurface::followMove() {
  const QPointer<SurfaceWindow> window(window_);
  const bool isMoving = services_.x.pointerState() & XCB_BUTTON_MASK_1 || services_.x.isPointerTaken(id_);
  geometryChanged();
  if (isMoving || !window || !window->sink()) return;
  moveTimer_.stop();
  moveEnds_ = true;
  await();
}

void DesktopSurface::endMove() {
  if (std::exchange(moveEnds_, false)) window_->reportLeftUp();
}

void DesktopSurface::invalidate(const platform::Rect& fromTopLeft) {
  window_->invalidate(outward(fromTopLeft));
}

void DesktopSurface::setCursor(Cursor cursor) {
  window_->setCursor(shapeOf(cursor));
}

void DesktopSurface::textInputChanged(bool endComposition) {
  if (endComposition) services_.composition.end();
  const bool enabled = sink().surfaceTextInput().has_value();
  const bool toggled = std::exchange(textEnabled_, enabled) != enabled;
  if (QGuiApplication::focusObject() != window_) return;
  QGuiApplication::inputMethod()->update(Qt::ImQueryAll);
  // Input methods learn only from a change of the focus whether there is something to type into.
  auto* context = QGuiApplicationPrivate::platformIntegration()->inputContext();
  if (toggled && context) context->setFocusObject(window_);
}

std::optional<platform::Bitmap> DesktopSurface::snapshot() {
  return window_->snapshot();
}

}  // namespace desktop
