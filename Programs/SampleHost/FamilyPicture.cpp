#include "Programs/SampleHost/FamilyPicture.h"

#include <algorithm>
#include <cmath>

namespace samplehost {

using platform::Bitmap;
using platform::Rect;

namespace {

/// What lies behind the windows.
constexpr std::uint32_t kDesktop = 0xFFB9C0CC;

Rect united(const Rect& a, const Rect& b) {
  const double x = std::min(a.x, b.x), y = std::min(a.y, b.y);
  return {x, y, std::max(a.maxX(), b.maxX()) - x, std::max(a.maxY(), b.maxY()) - y};
}

/// `top` as see-through as `alpha` says, over `bottom`; both premultiplied.
std::uint32_t over(std::uint32_t top, std::uint32_t bottom, double alpha) {
  const double cover = alpha * (top >> 24) / 255;
  std::uint32_t result = 0;
  for (int shift = 0; shift < 32; shift += 8) {
    const double channel = alpha * (top >> shift & 0xFF) + (1 - cover) * (bottom >> shift & 0xFF);
    result |= static_cast<std::uint32_t>(std::clamp(std::lround(channel), 0L, 255L)) << shift;
  }
  return result;
}

void paint(Bitmap& onto, const Bitmap& picture, int left, int top, double alpha) {
  for (int y = std::max(0, -top); y < std::min(picture.height, onto.height - top); ++y)
    for (int x = std::max(0, -left); x < std::min(picture.width, onto.width - left); ++x) {
      const auto at = static_cast<std::size_t>(y + top) * onto.width + x + left;
      onto.pixels[at] = over(picture.pixels[static_cast<std::size_t>(y) * picture.width + x], onto.pixels[at], alpha);
    }
}

}  // namespace

std::optional<Bitmap> picturedTogether(const std::vector<std::shared_ptr<platform::NSWindow>>& backToFront) {
  if (backToFront.empty()) return std::nullopt;
  Rect area = backToFront.front()->frame();
  std::vector<Bitmap> pictures;
  for (const auto& window : backToFront) {
    area = united(area, window->frame());
    auto picture = window->snapshot();
    if (!picture) return std::nullopt;
    pictures.push_back(std::move(*picture));
  }
  const double scale = pictures.front().scale;
  Bitmap all{
      static_cast<int>(std::ceil(area.width * scale)), static_cast<int>(std::ceil(area.height * scale)), scale, {}};
  all.pixels.assign(static_cast<std::size_t>(all.width) * static_cast<std::size_t>(all.height), kDesktop);
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    const Rect frame = backToFront[i]->frame();
    paint(all, pictures[i], static_cast<int>(std::lround((frame.x - area.x) * scale)),
          static_cast<int>(std::lround((area.maxY() - frame.maxY()) * scale)), backToFront[i]->alphaValue());
  }
  return all;
}

}  // namespace samplehost
