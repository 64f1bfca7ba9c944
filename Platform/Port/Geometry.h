#pragma once

#include <algorithm>
#include <cmath>

namespace platform {

/// Points; on screens the origin is the bottom left corner of the primary screen and y grows upwards.
struct Point {
  double x = 0;
  double y = 0;
  friend constexpr bool operator==(const Point&, const Point&) = default;
  friend constexpr Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
  friend constexpr Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
};

struct Size {
  double width = 0;
  double height = 0;
  friend constexpr bool operator==(const Size&, const Size&) = default;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  constexpr Rect() = default;
  constexpr Rect(double left, double bottom, double w, double h) : x(left), y(bottom), width(w), height(h) {}
  constexpr Rect(Point origin, Size size) : x(origin.x), y(origin.y), width(size.width), height(size.height) {}

  constexpr Point origin() const { return {x, y}; }
  constexpr Size size() const { return {width, height}; }
  constexpr double minX() const { return x; }
  constexpr double maxX() const { return x + width; }
  constexpr double minY() const { return y; }
  constexpr double maxY() const { return y + height; }
  constexpr Point center() const { return {x + width / 2, y + height / 2}; }
  constexpr bool isEmpty() const { return width <= 0 || height <= 0; }
  /// Half open: a point on the left or lower edge is inside, on the right or upper edge outside.
  constexpr bool contains(Point p) const { return p.x >= x && p.x < maxX() && p.y >= y && p.y < maxY(); }
  constexpr Rect offsetBy(Point d) const { return {x + d.x, y + d.y, width, height}; }
  constexpr Rect insetBy(double dx, double dy) const { return {x + dx, y + dy, width - 2 * dx, height - 2 * dy}; }
  Rect intersection(const Rect& other) const {
    const double left = std::max(x, other.x), low = std::max(y, other.y);
    const double right = std::min(maxX(), other.maxX()), high = std::min(maxY(), other.maxY());
    return right > left && high > low ? Rect{left, low, right - left, high - low} : Rect{};
  }
  friend constexpr bool operator==(const Rect&, const Rect&) = default;
};

}  // namespace platform
