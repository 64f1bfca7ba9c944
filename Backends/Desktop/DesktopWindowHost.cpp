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
          [this] { fencePassed(); }, std::move(identifier), selections),
      windowManager_(services_.x, [this](xcb_window_t window) {
        if (DesktopSurface* surface = find(window)) surface->keptAboveChanged();
      }) {
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
    if (exists(surface)) surface->geometryChanged();
}

void DesktopWindowHost::fencePassed() {
  for (DesktopSurface* surface : std::vector(surfaces_))
    if (exists(surface)) surface->fencePassed();
  activateIfManaged();
}

void DesktopWindowHost::activate(DesktopSurface& surface) {
  activating_ = &surface;
  activateIfManaged();
}

/// The toolkit would hold the request back too, and send it after one that came later for another window.
void DesktopWindowHost::activateIfManaged() {
  if (activating_ && !activating_->isShown()) activating_ = nullptr;
  if (!activating_ || !activating_->isManaged()) return;
  std::exchange(activating_, nullptr)->window().requestActivate();
  services_.x.flush();
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
  forgetPlace(surface);
  std::erase(surfaces_, &surface);
  if (active_ == &surface) active_ = nullptr;
  if (activating_ == &surface) activating_ = nullptr;
}

void DesktopWindowHost::forgetPlace(const DesktopSurface& surface) {
  std::erase(order_, surface.id());
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
  // A window manager that takes the keyboard, for the length of a move or of its menu, leaves the focus where it is; so
  // it is for the user, too. The toolkit has it again with the end of that.
  if (!focused && find(services_.x.inputFocus())) return;
  const auto found = std::find_if(surfaces_.begin(), surfaces_.end(),
                                  [&](DesktopSurface* surface) { return &surface->window() == focused; });
  DesktopSurface* next = found == surfaces_.end() ? nullptr : *found;
  DesktopSurface* previous = std::exchange(active_, next);
  if (next == previous) return;
  if (next) next->sink().surfaceActivated(true);
  if (exists(previous)) previous->sink().surfaceActivated(false);
}

void DesktopWindowHost::restack(DesktopSurface& surface, bool above, DesktopSurface* sibling) {
  if (!services_.x.hasWindowManager()) return restackAlone(surface, above, sibling);
  refreshOrder();
  if (sibling) return restackBeside(surface, above, *sibling);
  if (above) return raise(surface);
  std::erase(order_, surface.id());
  order_.insert(order_.begin(), surface.id());
  restacked();
  surface.window().lower();
}

void DesktopWindowHost::restackAlone(DesktopSurface& surface, bool above, const DesktopSurface* sibling) {
  if (sibling)
    services_.x.stack(surface.id(), above, sibling->id());
  else
    above ? surface.window().raise() : surface.window().lower();
}

/// Window managers agree on raising alone: everything of ours that belongs above follows, from low to high.
void DesktopWindowHost::restackBeside(DesktopSurface& surface, bool above, const DesktopSurface& sibling) {
  std::vector<DesktopSurface*> present;
  for (const xcb_window_t window : order_)
    if (DesktopSurface* each = find(window)) present.push_back(each);
  std::vector<DesktopSurface*> wanted = present;
  std::erase(wanted, &surface);
  const auto at = std::find(wanted.begin(), wanted.end(), &sibling);
  if (at == wanted.end()) return;
  auto place = wanted.insert(above ? std::next(at) : at, &surface);
  if (wanted == present) return;
  for (; place != wanted.end(); ++place) raise(**place);
}

void DesktopWindowHost::raise(DesktopSurface& surface) {
  std::erase(order_, surface.id());
  if (order_.empty()) return;
  services_.x.raiseAbove(surface.id(), order_.back());
  auto place = order_.end();
  while (!surface.floats() && place != order_.begin() && floats(*std::prev(place))) --place;
  order_.insert(place, surface.id());
  restacked();
}

void DesktopWindowHost::restacked() {
  sinceRestack_.start();
  restackTicket_ = services_.fence.issue();
}

/// Whether the window manager keeps the window above normal ones.
bool DesktopWindowHost::floats(xcb_window_t window) {
  const DesktopSurface* surface = find(window);
  return surface ? surface->floats() : services_.x.isKeptAbove(window);
}

/// The order as the window manager tells, unless it may still be at work on what we asked for; some write it down a
/// while after they have done it.
void DesktopWindowHost::refreshOrder() {
  const bool mayBeWritten = !sinceRestack_.isValid() || sinceRestack_.elapsed() > kRestackMilliseconds;
  if (mayBeWritten && services_.fence.hasPassed(restackTicket_)) order_ = services_.x.stacking();
  std::erase_if(order_, [this](xcb_window_t window) {
    const DesktopSurface* surface = find(window);
    return surface && !surface->isShown();
  });
  // What it doesn't know yet lies wherever it likes: below all until it is raised.
  for (const DesktopSurface* surface : surfaces_)
    if (surface->isShown() && std::find(order_.begin(), order_.end(), surface->id()) == order_.end())
      order_.insert(order_.begin(), surface->id());
}

}  // namespace desktop
