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

namespace {

constexpr qint64 kRestackMilliseconds = 100;

}  // namespace

DesktopWindowHost::DesktopWindowHost(std::string identifier, SelectionReader& selections)
    : services_(
          [this](xcb_window_t window) -> SurfaceSink* {
            DesktopSurface* surface = find(window);
            return surface ? &surface->sink() : nullptr;
          },
          std::move(identifier), selections) {
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
  refreshOrder();
  std::erase(order_, surface.id());
  const auto at = sibling ? std::find(order_.begin(), order_.end(), sibling->id()) : order_.end();
  if (sibling && at == order_.end()) return;
  auto place = sibling ? order_.insert(above ? std::next(at) : at, surface.id())
                       : order_.insert(above ? order_.end() : order_.begin(), surface.id());
  sinceRestack_.start();
  if (sibling && !services_.x.hasWindowManager()) return services_.x.stack(surface.id(), above, sibling->id());
  if (!sibling && !above) return surface.window().lower();
  // Window managers agree on raising alone: everything of ours that belongs above follows, from low to high.
  for (; place != order_.end(); ++place) find(*place)->window().raise();
}

/// The order as the window manager tells, unless it may still be at work on what we asked for.
void DesktopWindowHost::refreshOrder() {
  if (!sinceRestack_.isValid() || sinceRestack_.elapsed() > kRestackMilliseconds) order_ = services_.x.stacking();
  std::erase_if(order_, [this](xcb_window_t window) { return !find(window); });
  for (const DesktopSurface* surface : surfaces_)
    if (std::find(order_.begin(), order_.end(), surface->id()) == order_.end()) order_.push_back(surface->id());
}

}  // namespace desktop
