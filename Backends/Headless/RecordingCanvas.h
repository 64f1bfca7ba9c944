#pragma once

#include <string>
#include <vector>

#include "Platform/Port/Canvas.h"

namespace headless {

/// Writes down what is painted, one line a call, in the surface's coordinates (top left origin): "fill {{0, 0}, {10,
/// 10}} #ff0000ff radius 4", "text {5, 6} Hello". Keeps what a test asks about apart from that: texts and fills.
class RecordingCanvas final : public platform::port::Canvas {
 public:
  struct Text {
    std::u16string text;
    platform::Point topLeft;
  };
  struct Fill {
    platform::Rect rect;
    platform::Color color;
    double radius = 0;
  };

  void save() override;
  void restore() override;
  void translate(platform::Point by) override;
  void clip(const platform::Rect& rect, double radius) override;
  void fade(double opacity) override;
  void clear(const platform::Rect& rect) override;
  void fill(const platform::Rect& rect, const platform::Color& color, double radius) override;
  void stroke(const platform::Rect& rect, const platform::Color& color, double width, double radius) override;
  void line(platform::Point from, platform::Point to, const platform::Color& color, double width) override;
  void text(const platform::port::TextLayout& layout, platform::Point topLeft) override;
  void image(const platform::Bitmap& bitmap, const platform::Rect& into) override;

  const std::vector<std::string>& lines() const { return lines_; }
  const std::vector<Text>& texts() const { return texts_; }
  const std::vector<Fill>& fills() const { return fills_; }
  bool hasText(std::u16string_view text) const;
  /// Saves without a restore; 0 after a well-behaved paint.
  std::size_t openSaves() const { return origins_.size() - 1; }

 private:
  platform::Rect onSurface(const platform::Rect& rect) const { return rect.offsetBy(origins_.back()); }

  std::vector<platform::Point> origins_{{}};
  std::vector<std::string> lines_;
  std::vector<Text> texts_;
  std::vector<Fill> fills_;
};

}  // namespace headless
