#pragma once

#include "Platform/Port/Bitmap.h"
#include "Platform/Port/Geometry.h"
#include "Platform/Port/Text.h"

namespace platform::port {

/// Where a surface is painted: points, origin at the top left, y grows downwards. Valid during one paint only.
class Canvas {
 public:
  virtual ~Canvas() = default;
  virtual void save() = 0;
  virtual void restore() = 0;
  virtual void translate(Point by) = 0;
  /// Narrows the clip to a rectangle with rounded corners (radius in points, 0 for none).
  virtual void clip(const Rect& rect, double radius) = 0;
  /// Multiplies what is drawn until `restore` by an opacity of 0 to 1.
  virtual void fade(double opacity) = 0;
  /// Replaces the pixels with transparency.
  virtual void clear(const Rect& rect) = 0;
  virtual void fill(const Rect& rect, const Color& color, double radius) = 0;
  virtual void stroke(const Rect& rect, const Color& color, double width, double radius) = 0;
  virtual void line(Point from, Point to, const Color& color, double width) = 0;
  virtual void text(const TextLayout& layout, Point topLeft) = 0;
  virtual void image(const Bitmap& bitmap, const Rect& into) = 0;
};

}  // namespace platform::port
