#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "Platform/Port/Geometry.h"

namespace platform {

/// Components 0 to 1, not premultiplied, sRGB.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;
  friend constexpr bool operator==(const Color&, const Color&) = default;
};

/// The desktop's interface font at a size in points.
struct Font {
  double size = 13;
  bool bold = false;
  friend constexpr bool operator==(const Font&, const Font&) = default;
};

}  // namespace platform

namespace platform::port {

/// A stretch of a text with one look; offsets and lengths are UTF-16 units.
struct TextRun {
  std::size_t start = 0;
  std::size_t length = 0;
  Font font;
  Color color;
  bool underlined = false;
};

enum class Wrapping { none, words, characters };

struct TextOptions {
  double width = 0;  ///< points; ignored without wrapping, unless `elided`
  Wrapping wrapping = Wrapping::none;
  bool elided = false;  ///< one line that ends in "…" where it doesn't fit `width`
};

/// A laid-out line; offsets are UTF-16 units into the whole text and leave out the line's terminating newline.
struct TextLine {
  std::size_t start = 0;
  std::size_t length = 0;
  double top = 0;  ///< points below the layout's top
  double height = 0;
  double baseline = 0;  ///< points below `top`
  double width = 0;
};

/// A text laid out once; immutable. A text that is empty or ends in a newline has an empty last line.
class TextLayout {
 public:
  virtual ~TextLayout() = default;
  virtual std::span<const TextLine> lines() const = 0;
  virtual Size size() const = 0;
  /// The x at which a caret before `offset` stands in line `line`; points from the layout's left.
  virtual double caretX(std::size_t line, std::size_t offset) const = 0;
  /// The caret offset in line `line` that is nearest to `x`.
  virtual std::size_t offsetAt(std::size_t line, double x) const = 0;
};

/// Fonts and text shaping.
class TextMeasure {
 public:
  virtual ~TextMeasure() = default;
  /// Runs cover the text in order; offsets past the end are ignored.
  virtual std::shared_ptr<const TextLayout> layout(std::u16string_view text, std::span<const TextRun> runs,
                                                   const TextOptions& options) = 0;
};

}  // namespace platform::port
