#pragma once

#include "Platform/Port/Canvas.h"

class QPainter;

namespace desktop {

/// Paints with the toolkit's painter, whose device knows how many pixels make a point.
class DesktopCanvas final : public platform::port::Canvas {
 public:
  /// `painter` is active and borrowed for the length of one paint.
  explicit DesktopCanvas(QPainter& painter);

  void save() override;
  void restore() override;
  void translate(platform::Point by) override;
  void clip(const platform::Rect& rect, double radius) override;
  void fade(double opacity) override;
  void clear(const platform::Rect& rect) override;
  void fill(const platform::Rect& rect, const platform::Color& color, double radius) override;
  void stroke(const platform::Rect& rect, const platform::Color& color, double width, double radius) override;
  void line(platform::Point from, platform::Point to, const platform::Color& color, double width) override;
  void text(const platform::port::TextLayout& layout, platform::Point topLeft) override;
  void image(const platform::Bitmap& bitmap, const platform::Rect& into) override;

 private:
  QPainter& painter_;
};

}  // namespace desktop
