#pragma once

#include <QImage>

#include "Platform/Port/Bitmap.h"

namespace desktop {

/// A picture of the toolkit's in the model's pixels.
platform::Bitmap bitmapOf(const QImage& any);

}  // namespace desktop
