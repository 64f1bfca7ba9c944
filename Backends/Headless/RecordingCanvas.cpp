#include "Backends/Headless/RecordingCanvas.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "Backends/Headless/HeadlessText.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Unicode.h"

namespace headless {

using platform::Bitmap;
using platform::Color;
using platform::NSStringFromRect;
using platform::Point;
using platform::Rect;

namespace {

std::string colorText(const Color& color) {
  const auto byte = [](double component) { return std::lround(std::clamp(component, 0.0, 1.0) * 255); };
  return fmt::format("#{:02x}{:02x}{:02x}{:02x}", byte(color.red), byte(color.green), byte(color.blue),
                     byte(color.alpha));
}

}  // namespace

void RecordingCanvas::save() {
  origins_.push_back(origins_.back());
}

void RecordingCanvas::restore() {
  if (openSaves() > 0) origins_.pop_back();
}

void RecordingCanvas::translate(Point by) {
  origins_.back() = origins_.back() + by;
}

void RecordingCanvas::clip(const Rect& rect, double radius) {
  lines_.push_back(fmt::format("clip {} radius {}", NSStringFromRect(onSurface(rect)), radius));
}

void RecordingCanvas::fade(double opacity) {
  lines_.push_back(fmt::format("fade {}", opacity));
}

void RecordingCanvas::clear(const Rect& rect) {
  lines_.push_back(fmt::format("clear {}", NSStringFromRect(onSurface(rect))));
}

void RecordingCanvas::fill(const Rect& rect, const Color& color, double radius) {
  fills_.push_back({onSurface(rect), color, radius});
  lines_.push_back(fmt::format("fill {} {} radius {}", NSStringFromRect(onSurface(rect)), colorText(color), radius));
}

void RecordingCanvas::stroke(const Rect& rect, const Color& color, double width, double radius) {
  lines_.push_back(fmt::format("stroke {} {} width {} radius {}", NSStringFromRect(onSurface(rect)), colorText(color),
                               width, radius));
}

void RecordingCanvas::line(Point from, Point to, const Color& color, double width) {
  const Point start = from + origins_.back(), end = to + origins_.back();
  lines_.push_back(
      fmt::format("line {{{}, {}}} {{{}, {}}} {} width {}", start.x, start.y, end.x, end.y, colorText(color), width));
}

void RecordingCanvas::text(const platform::port::TextLayout& layout, Point topLeft) {
  const Point at = topLeft + origins_.back();
  const auto* known = dynamic_cast<const HeadlessTextLayout*>(&layout);
  texts_.push_back({known ? known->text() : std::u16string(), at});
  lines_.push_back(fmt::format("text {{{}, {}}} {}", at.x, at.y, platform::utf8(texts_.back().text)));
}

void RecordingCanvas::image(const Bitmap& bitmap, const Rect& into) {
  lines_.push_back(fmt::format("image {}x{} {}", bitmap.width, bitmap.height, NSStringFromRect(onSurface(into))));
}

bool RecordingCanvas::hasText(std::u16string_view text) const {
  return std::ranges::any_of(texts_, [text](const Text& each) { return each.text == text; });
}

}  // namespace headless
