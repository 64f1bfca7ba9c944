#pragma once

#include <filesystem>

#include "Platform/Port/Bitmap.h"

namespace samplehost {

/// Writes the picture as a PNG (ISO/IEC 15948) with 8 bits a channel. Throws std::runtime_error when it can't.
void writePng(const platform::Bitmap& bitmap, const std::filesystem::path& file);

}  // namespace samplehost
