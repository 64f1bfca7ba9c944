#pragma once

#include <memory>
#include <string_view>

#include "Platform/Port/Canvas.h"
#include "Platform/Port/Text.h"

namespace samplehost {

/// A text of one look, laid out and ready to be drawn. Main thread.
class TextBlock {
 public:
  TextBlock() = default;
  /// `width` in points; 0 with `Wrapping::none` leaves the text as wide as it is.
  TextBlock(std::string_view utf8, platform::Font font, platform::Color color,
            platform::port::Wrapping wrapping = platform::port::Wrapping::none, double width = 0);

  platform::Size size() const;
  void draw(platform::port::Canvas& canvas, platform::Point topLeft) const;
  /// Vertically in the middle of `rect`, from its left edge.
  void drawLeft(platform::port::Canvas& canvas, const platform::Rect& rect) const;
  void drawCentered(platform::port::Canvas& canvas, const platform::Rect& rect) const;

 private:
  std::shared_ptr<const platform::port::TextLayout> layout_;
};

}  // namespace samplehost
