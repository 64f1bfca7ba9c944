#include "Backends/Desktop/DesktopWindowHost.h"

#include <QCursor>
#include <QGuiApplication>
#include <algorithm>
#include <utility>

#include "Backends/Desktop/Coordinates.h"
#include "Backends/Desktop/DesktopSurface.h"

namespace desktop {

using platform::port::ScreenInfo;
using platform::port::Surface;
using platform::port::SurfaceSink;
using platform::port::SurfaceState;

DesktopWindowHost::DesktopWindowHost(std::string identifier)
    : services_(
          [this](xcb_window_t window) -> SurfaceSink* {
            DesktopSurface* surface = find(window);
            return surface ? &surface->sink() : nullptr;
          },
          std::move(identifier)) {
  screensTimer_.setSingleShot(true);
  QObject::connect(&screensTimer_, &QTimer::timeout, &context_, [this] { reportScreens(); });
  QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, &context_, [this] { updateActive(); });
  QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, &context_, [this] { screensTimer_.start(); });
  QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &context_, [this] { screensTimer_.start(); });
  QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &context_, [this](QScreen* screen) {
    watchScreen(screen);
    screensTimer_.start();
  });
  for (QScreen* screen : QGuiApplication::screens()) watchScreen(screen);
}

DesktopWindowHost::~DesktopWindowHost() = default;

void DesktopWindowHost::watchScreen(QScreen* screen) {
  // One change of the set-up arrives as many signals; it is reported once.
  QObject::connect(screen, &QScreen::geometryChanged, &context_, [this] { screensTimer_.start(); });
  QObject::connect(screen, &QScreen::availableGeometryChanged, &context_, [this] { screensTimer_.start(); });
}

void DesktopWindowHost::reportScreens() {
  if (screensChanged_) screensChanged_();
  // The origin is a corner of the primary screen: windows that stood still have other coordinates now.
  for (DesktopSurface* surface : std::vector(surfaces_))
    if (exists(surface)) surface->reportFrame();
}

std::unique_ptr<Surface> DesktopWindowHost::makeSurface(SurfaceSink& sink, const SurfaceState& state) {
  return std::make_unique<DesktopSurface>(*this, services_, sink, state);
}

std::vector<ScreenInfo> DesktopWindowHost::screens() const {
  QList<QScreen*> all = QGuiApplication::screens();
  std::stable_partition(all.begin(), all.end(), [](QScreen* s) { return s == QGuiApplication::primaryScreen(); });
  std::vector<ScreenInfo> result;
  for (const QScreen* screen : all)
    result.push_back({toModel(QRectF(screen->geometry())), toModel(QRectF(screen->availableGeometry())),
                      screen->devicePixelRatio()});
  return result;
}

platform::Point DesktopWindowHost::pointerLocation() const {
  return toModel(QPointF(QCursor::pos()));
}

void DesktopWindowHost::remove(DesktopSurface& surface) {
  std::erase(surfaces_, &surface);
  if (active_ == &surface) active_ = nullptr;
}

DesktopSurface* DesktopWindowHost::find(xcb_window_t window) const {
  const auto found = std::find_if(surfaces_.begin(), surfaces_.end(), [&](const auto* s) { return s->id() == window; });
  return found == surfaces_.end() ? nullptr : *found;
}

bool DesktopWindowHost::exists(const DesktopSurface* surface) const {
  return std::find(surfaces_.begin(), surfaces_.end(), surface) != surfaces_.end();
}

void DesktopWindowHost::updateActive() {
  const QWindow* focused = QGuiApplication::focusWindow();
  if (focused && focused->type() == Qt::Popup) return;
  // The window manager takes the keyboard for the length of a move; the user knows no such thing.
  if (active_ && active_->isMoving()) return;
  const auto found = std::find_if(surfaces_.begin(), surfaces_.end(),
                                  [&](DesktopSurface* surface) { return &surface->window() == focused; });
  DesktopSurface* next = found == surfaces_.end() ? nullptr : *found;
  DesktopSurface* previous = std::exchange(active_, next);
  if (next == previous) return;
  if (next) next->sink().surfaceActivated(true);
  if (exists(previous)) previous->sink().surfaceActivated(false);
}

void DesktopWindowHost::restack(DesktopSurface& surface, bool above, DesktopSurface* sibling) {
  if (services_.x.restack(surface.id(), above, sibling ? sibling->id() : xcb_window_t{XCB_WINDOW_NONE})) return;
  if (sibling)
    raiseInOrder(surface, above, sibling);
  else if (above)
    surface.window().raise();
  else
    surface.window().lower();
}

/// For window managers that can only raise: raises the surface, then all of ours that belong above it, from low to
/// high.
void DesktopWindowHost::raiseInOrder(DesktopSurface& surface, bool above, const DesktopSurface* sibling) {
  std::vector<DesktopSurface*> order;
  for (const xcb_window_t window : services_.x.stacking())
    if (DesktopSurface* ours = find(window); ours && ours != &surface) order.push_back(ours);
  auto place = std::find(order.begin(), order.end(), sibling);
  if (place == order.end()) return;
  place = order.insert(above ? std::next(place) : place, &surface);
  for (; place != order.end(); ++place) (*place)->window().raise();
}

}  // namespace desktop
