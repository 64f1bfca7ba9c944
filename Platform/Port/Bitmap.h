#pragma once

#include <cstdint>
#include <vector>

namespace platform {

/// Pixels row by row from the top left, each 0xAARRGGBB with colour premultiplied by alpha; `scale` pixels make a
/// point.
struct Bitmap {
  int width = 0;
  int height = 0;
  double scale = 1;
  std::vector<std::uint32_t> pixels;
};

}  // namespace platform
