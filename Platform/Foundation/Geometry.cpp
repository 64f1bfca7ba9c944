#include "Platform/Foundation/Geometry.h"

#include <fmt/format.h>

namespace platform {

std::string NSStringFromRect(const Rect& rect) {
  // Adding zero turns a negative zero into a plain one.
  return fmt::format("{{{{{}, {}}}, {}}}", rect.x + 0.0, rect.y + 0.0, NSStringFromSize(rect.size()));
}

std::string NSStringFromSize(const Size& size) {
  return fmt::format("{{{}, {}}}", size.width + 0.0, size.height + 0.0);
}

}  // namespace platform
