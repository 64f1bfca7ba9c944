#include "Backends/Desktop/Coordinates.h"

#include <qpa/qplatformscreen.h>

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cmath>

namespace desktop {

namespace {

/// The toolkit scales a screen's size and leaves its origin in pixels, so that screens which touch have gaps between
/// them at other scales than 1. The model's screens touch.
QPointF originInPoints(const QScreen& screen) {
  const auto screens = QGuiApplication::screens();
  const bool evenly = std::ranges::all_of(
      screens, [&](const QScreen* other) { return other->devicePixelRatio() == screen.devicePixelRatio(); });
  // No origin suits screens of different scales; with the toolkit's at least none lie upon each other.
  if (!evenly || !screen.handle()) return screen.geometry().topLeft();
  return QPointF(screen.handle()->geometry().topLeft()) / screen.devicePixelRatio();
}

QRectF withoutGaps(const QScreen& screen) {
  return {originInPoints(screen), QSizeF(screen.geometry().size())};
}

QRectF withGaps(const QScreen& screen) {
  return screen.geometry();
}

double distance(const QRectF& area, const QPointF& point) {
  const double x = std::max({area.left() - point.x(), point.x() - area.right(), 0.0});
  const double y = std::max({area.top() - point.y(), point.y() - area.bottom(), 0.0});
  return std::hypot(x, y);
}

/// From the one arrangement of screens to the other, by the screen that holds `point` or is nearest to it.
QPointF shift(const QPointF& point, QRectF (*from)(const QScreen&), QRectF (*to)(const QScreen&)) {
  const auto screens = QGuiApplication::screens();
  const auto nearest =
      std::ranges::min_element(screens, {}, [&](const QScreen* screen) { return distance(from(*screen), point); });
  return nearest == screens.end() ? QPointF() : to(**nearest).topLeft() - from(**nearest).topLeft();
}

QRectF primary() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen ? withoutGaps(*screen) : QRectF();
}

int whole(double value) {
  return static_cast<int>(std::lround(std::clamp(value, -30000.0, 30000.0)));
}

}  // namespace

QRect toToolkit(const platform::Rect& rect) {
  const QRectF screen = primary();
  const QRectF place(screen.left() + rect.x, screen.bottom() - rect.maxY(), rect.width, rect.height);
  const QPointF topLeft = place.topLeft() + shift(place.center(), withoutGaps, withGaps);
  return {whole(topLeft.x()), whole(topLeft.y()), std::max(1, whole(rect.width)), std::max(1, whole(rect.height))};
}

platform::Rect toModel(const QRectF& rect) {
  const QRectF screen = primary();
  const QRectF place = rect.translated(shift(rect.center(), withGaps, withoutGaps));
  return {place.x() - screen.left(), screen.bottom() - (place.y() + place.height()), place.width(), place.height()};
}

platform::Point toModel(const QPointF& point) {
  const QRectF screen = primary();
  const QPointF place = point + shift(point, withGaps, withoutGaps);
  return {place.x() - screen.left(), screen.bottom() - place.y()};
}

}  // namespace desktop
