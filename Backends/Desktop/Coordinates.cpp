#include "Backends/Desktop/Coordinates.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cmath>

namespace desktop {

namespace {

QRectF primary() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen ? QRectF(screen->geometry()) : QRectF();
}

int whole(double value) {
  return static_cast<int>(std::lround(std::clamp(value, -30000.0, 30000.0)));
}

}  // namespace

QRect toToolkit(const platform::Rect& rect) {
  const QRectF screen = primary();
  return {whole(screen.left() + rect.x), whole(screen.bottom() - rect.maxY()), std::max(1, whole(rect.width)),
          std::max(1, whole(rect.height))};
}

platform::Rect toModel(const QRectF& rect) {
  const QRectF screen = primary();
  return {rect.x() - screen.left(), screen.bottom() - (rect.y() + rect.height()), rect.width(), rect.height()};
}

platform::Point toModel(const QPointF& point) {
  const QRectF screen = primary();
  return {point.x() - screen.left(), screen.bottom() - point.y()};
}

}  // namespace desktop
