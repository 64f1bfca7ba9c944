#pragma once

#include "Platform/Port/Bitmap.h"
#include "Platform/Port/FileIcons.h"

namespace platform {

/// An icon for a desktop without a picture of the type: a sheet of paper with its ending on a band in the colour of its
/// family, or a folder. `side` by `side` pixels of scale 1; the same every time.
Bitmap fallbackFileIcon(const port::FileType& type, int side);

}  // namespace platform
