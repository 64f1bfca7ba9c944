#include "Programs/SampleHost/TextBlock.h"

#include <cmath>

#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Unicode.h"

namespace samplehost {

using platform::Point;
using platform::Rect;
using platform::Size;
using platform::port::Canvas;

TextBlock::TextBlock(std::string_view utf8, platform::Font font, platform::Color color,
                     platform::port::Wrapping wrapping, double width) {
  const std::u16string text = platform::utf16(utf8);
  const platform::port::TextRun run{.start = 0, .length = text.size(), .font = font, .color = color};
  const bool elided = wrapping == platform::port::Wrapping::none && width > 0;
  layout_ = platform::Session::current().backend().text().layout(
      text, {&run, 1}, {.width = width, .wrapping = wrapping, .elided = elided});
}

Size TextBlock::size() const {
  return layout_ ? layout_->size() : Size{};
}

void TextBlock::draw(Canvas& canvas, Point topLeft) const {
  // Whole points keep small type crisp.
  if (layout_) canvas.text(*layout_, {std::round(topLeft.x), std::round(topLeft.y)});
}

void TextBlock::drawLeft(Canvas& canvas, const Rect& rect) const {
  draw(canvas, {rect.x, rect.y + (rect.height - size().height) / 2});
}

void TextBlock::drawCentered(Canvas& canvas, const Rect& rect) const {
  draw(canvas, {rect.x + (rect.width - size().width) / 2, rect.y + (rect.height - size().height) / 2});
}

}  // namespace samplehost
