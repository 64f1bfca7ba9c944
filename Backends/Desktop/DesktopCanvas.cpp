#include "Backends/Desktop/DesktopCanvas.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "Backends/Desktop/DesktopText.h"

namespace desktop {

using platform::Color;
using platform::Point;
using platform::Rect;

namespace {

QRectF rectOf(const Rect& rect) {
  return {rect.x, rect.y, rect.width, rect.height};
}

QColor colorOf(const Color& color) {
  const auto component = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
  return QColor::fromRgbF(component(color.red), component(color.green), component(color.blue), component(color.alpha));
}

}  // namespace

DesktopCanvas::DesktopCanvas(QPainter& painter) : painter_(painter) {
  painter_.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
}

void DesktopCanvas::save() {
  painter_.save();
}

void DesktopCanvas::restore() {
  painter_.restore();
}

void DesktopCanvas::translate(Point by) {
  painter_.translate(by.x, by.y);
}

void DesktopCanvas::clip(const Rect& rect, double radius) {
  if (radius <= 0) {
    painter_.setClipRect(rectOf(rect), Qt::IntersectClip);
    return;
  }
  QPainterPath path;
  path.addRoundedRect(rectOf(rect), radius, radius);
  painter_.setClipPath(path, Qt::IntersectClip);
}

void DesktopCanvas::fade(double opacity) {
  painter_.setOpacity(painter_.opacity() * std::clamp(opacity, 0.0, 1.0));
}

void DesktopCanvas::clear(const Rect& rect) {
  const auto before = painter_.compositionMode();
  painter_.setCompositionMode(QPainter::CompositionMode_Clear);
  painter_.fillRect(rectOf(rect), Qt::black);
  painter_.setCompositionMode(before);
}

void DesktopCanvas::fill(const Rect& rect, const Color& color, double radius) {
  if (radius <= 0) {
    painter_.fillRect(rectOf(rect), colorOf(color));
    return;
  }
  painter_.setPen(Qt::NoPen);
  painter_.setBrush(colorOf(color));
  painter_.drawRoundedRect(rectOf(rect), radius, radius);
}

void DesktopCanvas::stroke(const Rect& rect, const Color& color, double width, double radius) {
  painter_.setPen(QPen(colorOf(color), width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
  painter_.setBrush(Qt::NoBrush);
  if (radius > 0)
    painter_.drawRoundedRect(rectOf(rect), radius, radius);
  else
    painter_.drawRect(rectOf(rect));
}

void DesktopCanvas::line(Point from, Point to, const Color& color, double width) {
  painter_.setPen(QPen(colorOf(color), width, Qt::SolidLine, Qt::FlatCap));
  painter_.drawLine(QPointF(from.x, from.y), QPointF(to.x, to.y));
}

void DesktopCanvas::text(const platform::port::TextLayout& layout, Point topLeft) {
  if (const auto* shaped = dynamic_cast<const DesktopTextLayout*>(&layout))
    shaped->draw(painter_, {topLeft.x, topLeft.y});
}

void DesktopCanvas::image(const platform::Bitmap& bitmap, const Rect& into) {
  const auto width = static_cast<std::size_t>(std::max(0, bitmap.width));
  const auto height = static_cast<std::size_t>(std::max(0, bitmap.height));
  if (width == 0 || height == 0 || bitmap.pixels.size() / width < height) return;
  const QImage image(reinterpret_cast<const uchar*>(bitmap.pixels.data()), bitmap.width, bitmap.height,
                     static_cast<qsizetype>(width * sizeof(std::uint32_t)), QImage::Format_ARGB32_Premultiplied);
  painter_.drawImage(rectOf(into), image);
}

}  // namespace desktop
