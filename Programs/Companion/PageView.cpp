#include "Programs/Companion/PageView.h"

#include <fmt/format.h>

#include <utility>

#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Unicode.h"

namespace companion {

using platform::Color;
using platform::Font;

namespace {

constexpr Color kPaper{1, 1, 1, 1};
constexpr Color kBar{0.16, 0.45, 0.86, 1};
constexpr Color kOnBar{1, 1, 1, 1};
constexpr Color kInk{0.13, 0.14, 0.17, 1};
constexpr Color kFaint{0.45, 0.47, 0.52, 1};
constexpr double kBarHeight = 52;
constexpr double kMargin = 20;

/// Draws a text wrapped to the width and returns where the next one begins.
double drawText(platform::port::Canvas& canvas, const std::string& utf8, Font font, Color color, double top,
                double width) {
  const std::u16string text = platform::utf16(utf8);
  const platform::port::TextRun run{.start = 0, .length = text.size(), .font = font, .color = color};
  const auto layout = platform::Session::current().backend().text().layout(
      text, {&run, 1}, {.width = width, .wrapping = platform::port::Wrapping::characters});
  canvas.text(*layout, {kMargin, top});
  return top + layout->size().height;
}

}  // namespace

void PageView::setPage(Page page) {
  page_ = std::move(page);
  setNeedsDisplay();
}

void PageView::draw(platform::port::Canvas& canvas) {
  const double width = bounds().width - 2 * kMargin;
  canvas.fill({0, 0, bounds().width, bounds().height}, kPaper, 0);
  canvas.fill({0, 0, bounds().width, kBarHeight}, kBar, 0);
  drawText(canvas, "Mirelo 웹 보기", {.size = 16, .bold = true}, kOnBar, 16, width);
  double top = drawText(canvas, page_.url.empty() ? "페이지가 없습니다" : page_.url, {.size = 15, .bold = true}, kInk,
                        kBarHeight + kMargin, width);
  const auto line = [&](const std::string& name, const std::string& value) {
    if (!value.empty()) top = drawText(canvas, name + ": " + value, {.size = 12}, kFaint, top + 8, width);
  };
  line("크기", fmt::format("{:g} × {:g}", page_.windowSize.width, page_.windowSize.height));
  line("헤더", page_.customHeader);
  line("사용자 에이전트", page_.customUserAgent);
}

}  // namespace companion
