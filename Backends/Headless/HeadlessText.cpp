#include "Backends/Headless/HeadlessText.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace headless {

using platform::port::TextLine;
using platform::port::TextOptions;
using platform::port::TextRun;
using platform::port::Wrapping;

namespace {

constexpr double kNarrow = 0.5, kWide = 1, kLineHeight = 1.25, kBaseline = 1, kDefaultFontSize = 13;

struct Range {
  char32_t first, last;
};

constexpr std::array kCombining{Range{0x300, 0x36F},   Range{0x483, 0x489},   Range{0x591, 0x5BD},
                                Range{0x610, 0x61A},   Range{0x64B, 0x65F},   Range{0x1160, 0x11FF},
                                Range{0x1AB0, 0x1AFF}, Range{0x1DC0, 0x1DFF}, Range{0x200B, 0x200F},
                                Range{0x20D0, 0x20FF}, Range{0x302A, 0x302F}, Range{0x3099, 0x309A},
                                Range{0xFE00, 0xFE0F}, Range{0xFE20, 0xFE2F}, Range{0x1F3FB, 0x1F3FF}};
constexpr std::array kWideRanges{Range{0x1100, 0x115F},   Range{0x2E80, 0x303E},   Range{0x3041, 0x33FF},
                                 Range{0x3400, 0x4DBF},   Range{0x4E00, 0x9FFF},   Range{0xA960, 0xA97F},
                                 Range{0xAC00, 0xD7A3},   Range{0xF900, 0xFAFF},   Range{0xFE30, 0xFE6F},
                                 Range{0xFF00, 0xFF60},   Range{0xFFE0, 0xFFE6},   Range{0x1F300, 0x1F64F},
                                 Range{0x1F680, 0x1F6FF}, Range{0x1F900, 0x1F9FF}, Range{0x20000, 0x3FFFD}};

template <std::size_t N>
bool isIn(const std::array<Range, N>& ranges, char32_t character) {
  return std::ranges::any_of(ranges, [=](Range range) { return character >= range.first && character <= range.last; });
}

double emsOf(char32_t character) {
  if (character == u'\n' || isIn(kCombining, character)) return 0;
  return isIn(kWideRanges, character) ? kWide : kNarrow;
}

bool isHigh(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool isLow(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}
bool isBlank(char16_t unit) {
  return unit == u' ' || unit == u'\t';
}

}  // namespace

HeadlessTextLayout::HeadlessTextLayout(std::u16string_view text, std::span<const TextRun> runs,
                                       const TextOptions& options)
    : text_(text), runs_(runs.begin(), runs.end()) {
  measure();
  if (options.elided) {
    addLine(0, text_.size(), false);
    elide(options.width);
    return;
  }
  for (std::size_t start = 0;;) {
    const std::size_t newline = std::min(text_.find(u'\n', start), text_.size());
    breakParagraph(start, newline, options);
    if (newline == text_.size()) return;
    start = newline + 1;
  }
}

void HeadlessTextLayout::measure() {
  fontSize_.assign(text_.size(), runs_.empty() ? kDefaultFontSize : runs_.back().font.size);
  for (const TextRun& run : runs_)
    for (std::size_t i = run.start; i < std::min(text_.size(), run.start + run.length); ++i)
      fontSize_[i] = run.font.size;
  x_.assign(1, 0);
  for (std::size_t i = 0; i < text_.size(); ++i) {
    double ems = emsOf(text_[i]);
    if (isHigh(text_[i]) && i + 1 < text_.size() && isLow(text_[i + 1]))
      ems = emsOf(0x10000 + ((char32_t{text_[i]} - 0xD800) << 10) + (text_[i + 1] - 0xDC00));
    else if (isLow(text_[i]) && i > 0 && isHigh(text_[i - 1]))
      ems = 0;  // the pair's advance stands at its first unit
    x_.push_back(x_.back() + ems * fontSize_[i]);
  }
}

void HeadlessTextLayout::breakParagraph(std::size_t start, std::size_t end, const TextOptions& options) {
  do {
    const std::size_t next = options.wrapping == Wrapping::none ? end : lineEnd(start, end, options);
    addLine(start, next, next < end);
    start = next;
  } while (start < end);
}

std::size_t HeadlessTextLayout::lineEnd(std::size_t start, std::size_t end, const TextOptions& options) const {
  std::size_t fits = start;
  while (fits < end && (x_[fits + 1] - x_[start] <= options.width || isBlank(text_[fits]))) ++fits;
  if (fits == end) return end;
  if (options.wrapping == Wrapping::words) {
    for (std::size_t at = fits; at > start; --at) {
      const bool wideSides = emsOf(text_[at]) == kWide || emsOf(text_[at - 1]) == kWide;
      if (isBlank(text_[at - 1]) || wideSides) return at;
    }
  }
  // Not one character fits, or the word alone is too long.
  fits = std::max(fits, start + 1);
  while (fits < end && x_[fits + 1] == x_[fits]) ++fits;
  return fits;
}

void HeadlessTextLayout::addLine(std::size_t start, std::size_t end, bool wrapped) {
  double fontSize = start == end ? fontSizeAt(start) : 0;
  for (std::size_t i = start; i < end; ++i) fontSize = std::max(fontSize, fontSize_[i]);
  std::size_t inked = end;
  // Blanks at which a line wraps hang over its end.
  while (wrapped && inked > start && isBlank(text_[inked - 1])) --inked;
  const TextLine line{.start = start,
                      .length = end - start,
                      .top = size_.height,
                      .height = fontSize * kLineHeight,
                      .baseline = fontSize * kBaseline,
                      .width = x_[inked] - x_[start]};
  size_ = {std::max(size_.width, line.width), size_.height + line.height};
  lines_.push_back(line);
}

void HeadlessTextLayout::elide(double width) {
  TextLine& line = lines_.front();
  if (line.width <= width) return;
  const double ellipsis = kNarrow * fontSizeAt(0);
  std::size_t shown = 0;
  while (shown < text_.size() && x_[shown + 1] + ellipsis <= width) ++shown;
  elided_ = true;
  line.length = shown;
  line.width = x_[shown] + ellipsis;
  size_.width = line.width;
}

double HeadlessTextLayout::fontSizeAt(std::size_t at) const {
  if (!fontSize_.empty()) return fontSize_[std::min(at, fontSize_.size() - 1)];
  return runs_.empty() ? kDefaultFontSize : runs_.front().font.size;
}

double HeadlessTextLayout::caretX(std::size_t line, std::size_t offset) const {
  const TextLine& in = lines_.at(line);
  return x_[std::clamp(offset, in.start, in.start + in.length)] - x_[in.start];
}

std::size_t HeadlessTextLayout::offsetAt(std::size_t line, double x) const {
  const TextLine& in = lines_.at(line);
  std::size_t best = in.start;
  // Of places at the same x the last one: a mark stays with its base, a surrogate with its pair.
  for (std::size_t at = in.start; at <= in.start + in.length; ++at)
    if (std::abs(caretX(line, at) - x) <= std::abs(caretX(line, best) - x)) best = at;
  return best;
}

std::shared_ptr<const platform::port::TextLayout> HeadlessText::layout(std::u16string_view text,
                                                                       std::span<const TextRun> runs,
                                                                       const TextOptions& options) {
  return std::make_shared<HeadlessTextLayout>(text, runs, options);
}

}  // namespace headless
