#include "Programs/Companion/Page.h"

#include <cmath>
#include <cstdio>

namespace companion {

using platform::Rect;
using platform::Size;

namespace {

constexpr double kFarthest = 100'000;
constexpr double kSmallest = 100;
constexpr double kLargest = 10'000;

bool isSize(Size size) {
  return size.width >= kSmallest && size.width <= kLargest && size.height >= kSmallest && size.height <= kLargest;
}

}  // namespace

std::string textIn(const platform::Dictionary& dictionary, const std::string& key) {
  const auto found = dictionary.find(key);
  const auto* const text = found == dictionary.end() ? nullptr : found->second.get<std::string>();
  return text ? *text : std::string();
}

std::optional<Rect> rectFrom(const std::string& text) {
  Rect rect;
  int end = -1;
  std::sscanf(text.c_str(), "{{%lf, %lf}, {%lf, %lf}}%n", &rect.x, &rect.y, &rect.width, &rect.height, &end);
  const bool whole = end >= 0 && static_cast<std::size_t>(end) == text.size();
  if (!whole || !isSize(rect.size()) || !(std::abs(rect.x) < kFarthest) || !(std::abs(rect.y) < kFarthest))
    return std::nullopt;
  return rect;
}

std::optional<Size> sizeFrom(const std::string& text) {
  Size size;
  int end = -1;
  std::sscanf(text.c_str(), "{%lf, %lf}%n", &size.width, &size.height, &end);
  if (end < 0 || static_cast<std::size_t>(end) != text.size() || !isSize(size)) return std::nullopt;
  return size;
}

Page Page::from(const platform::Dictionary& parameters) {
  Page page;
  page.url = textIn(parameters, "url");
  page.customHeader = textIn(parameters, "customHeader");
  page.customUserAgent = textIn(parameters, "customUserAgent");
  page.parentID = textIn(parameters, "parentID");
  page.windowSize = sizeFrom(textIn(parameters, "windowSize")).value_or(page.windowSize);
  return page;
}

}  // namespace companion
