#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Port/Bitmap.h"
#include "Platform/Port/Geometry.h"

namespace platform {

/// A picture in points, with one or more bitmaps that show it at different sizes. Never changes; main thread.
class PLATFORM_EXPORT NSImage {
 public:
  /// The bitmaps all show the same picture; their `scale` is set to their pixels to a point of `size`.
  NSImage(Size size, std::vector<Bitmap> representations);
  /// A resource of the bundle: "NAME.png", whose pixels are points, and drawings of the same for other sizes,
  /// "NAME@2x.png", "NAME@16px.png": what follows the "@" is for the reader, the file's own size counts. Null when
  /// there is no "NAME.png" that can be read.
  static std::shared_ptr<NSImage> forResource(const Bundle& bundle, const std::string& name);

  Size size() const { return size_; }
  /// Smallest first; never empty but for an image made without any.
  const std::vector<Bitmap>& representations() const { return representations_; }
  /// The bitmap to draw over the whole image at `scale` pixels a point: the smallest one that has as many pixels, or
  /// the largest there is. Nothing for an image without any.
  std::optional<Bitmap> bestRepresentation(double scale) const;

 private:
  Size size_;
  std::vector<Bitmap> representations_;
};

}  // namespace platform
