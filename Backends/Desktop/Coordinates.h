#pragma once

#include <QPoint>
#include <QRect>

#include "Platform/Port/Geometry.h"

namespace desktop {

/// The one place where the model's coordinates (origin at the bottom left of the primary screen, y up) and the
/// toolkit's (origin at the top left, y down) meet. Whole pixels at scale 1; an empty rectangle becomes one of 1 × 1.
QRect toToolkit(const platform::Rect& rect);
platform::Rect toModel(const QRectF& rect);
platform::Point toModel(const QPointF& point);

}  // namespace desktop
