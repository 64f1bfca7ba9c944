#include "Backends/Desktop/Pictures.h"

namespace desktop {

platform::Bitmap bitmapOf(const QImage& any) {
  const QImage image = any.convertToFormat(QImage::Format_ARGB32_Premultiplied);
  platform::Bitmap bitmap{image.width(), image.height(), image.devicePixelRatio(), {}};
  for (int y = 0; y < image.height(); ++y) {
    const auto* row = reinterpret_cast<const std::uint32_t*>(image.constScanLine(y));
    bitmap.pixels.insert(bitmap.pixels.end(), row, row + image.width());
  }
  return bitmap;
}

}  // namespace desktop
