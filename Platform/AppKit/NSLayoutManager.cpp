#include "Platform/AppKit/NSLayoutManager.h"

#include <algorithm>
#include <cmath>

#include "Platform/Foundation/Session.h"

namespace platform {
namespace {

constexpr double kNewlineStretch = 4;

Font fontOf(const Attributes& attributes, const Font& fallback) {
  const auto found = attributes.find(kFontAttribute);
  const auto* font = found == attributes.end() ? nullptr : std::get_if<Font>(&found->second);
  return font == nullptr ? fallback : *font;
}

Color colorOf(const Attributes& attributes, const Color& fallback) {
  const auto found = attributes.find(kForegroundColorAttribute);
  const auto* color = found == attributes.end() ? nullptr : std::get_if<Color>(&found->second);
  return color == nullptr ? fallback : *color;
}

}  // namespace

void NSLayoutManager::setWidth(double width, port::Wrapping wrapping) {
  if (width == width_ && wrapping == wrapping_) return;
  width_ = width;
  wrapping_ = wrapping;
  for (auto& paragraph : paragraphs_) paragraph.layout = nullptr;
}

void NSLayoutManager::invalidateAll() {
  paragraphs_.assign(1, {});
  split_ = false;
}

void NSLayoutManager::invalidate(NSRange range) {
  for (std::size_t at = paragraphOf(range.location); at < paragraphs_.size(); ++at) {
    if (paragraphs_[at].start > range.end()) break;
    paragraphs_[at].layout = nullptr;
  }
}

void NSLayoutManager::replaced(const std::u16string& text, NSRange old, std::uint64_t newLength) {
  if (!split_) return;
  const std::size_t first = paragraphOf(old.location);
  const std::size_t last = paragraphOf(old.end());
  const std::uint64_t added = newLength - old.length;  // modulo 2^64: also right when the text gets shorter
  const std::uint64_t end = paragraphs_[last].end() + added;

  std::vector<Paragraph> fresh;
  for (std::uint64_t start = paragraphs_[first].start;;) {
    const std::size_t newline = text.find(u'\n', start);
    const std::uint64_t stop = std::min<std::uint64_t>(newline, end);
    fresh.push_back({start, stop - start, 0, nullptr});
    if (stop >= end) break;
    start = stop + 1;
  }
  for (std::size_t at = last + 1; at < paragraphs_.size(); ++at) paragraphs_[at].start += added;
  const auto from = paragraphs_.begin() + static_cast<std::ptrdiff_t>(first);
  const auto until = paragraphs_.begin() + static_cast<std::ptrdiff_t>(last) + 1;
  paragraphs_.insert(paragraphs_.erase(from, until), fresh.begin(), fresh.end());
}

void NSLayoutManager::layOut(const NSAttributedString& text, const Look& look) {
  if (!split_) {
    split_ = true;
    paragraphs_.assign(1, {});
    replaced(text.string(), {0, 0}, text.length());
  }
  used_ = {0, 0};
  for (auto& paragraph : paragraphs_) {
    if (!paragraph.layout) {
      paragraph.layout = layOut(paragraph, text, look);
      ++laidOut_;
    }
    paragraph.top = used_.height;
    const Size size = paragraph.layout->size();
    used_ = {std::max(used_.width, size.width), used_.height + size.height};
  }
}

std::shared_ptr<const port::TextLayout> NSLayoutManager::layOut(const Paragraph& paragraph,
                                                                const NSAttributedString& text,
                                                                const Look& look) const {
  std::vector<port::TextRun> runs;
  const auto append = [&](std::uint64_t from, std::uint64_t to, const Attributes& attributes, bool underlined) {
    if (from >= to) return;
    runs.push_back({from - paragraph.start, to - from, fontOf(attributes, look.font), colorOf(attributes, look.color),
                    underlined});
  };
  const auto& all = text.runs();
  auto run = std::partition_point(all.begin(), all.end(),
                                  [&](const auto& candidate) { return candidate.range.end() <= paragraph.start; });
  for (; run != all.end() && run->range.location < paragraph.end(); ++run) {
    const std::uint64_t from = std::max(run->range.location, paragraph.start);
    const std::uint64_t to = std::min(run->range.end(), paragraph.end());
    const std::uint64_t markStart = std::clamp(look.underlined.location, from, to);
    const std::uint64_t markEnd = std::clamp(look.underlined.end(), from, to);
    append(from, markStart, run->attributes, false);
    append(markStart, markEnd, run->attributes, true);
    append(markEnd, to, run->attributes, false);
  }
  // An empty line is as high as the text that would be typed into it.
  if (runs.empty()) runs.push_back({0, 0, look.font, look.color, false});
  const auto part = std::u16string_view(text.string()).substr(paragraph.start, paragraph.length);
  return Session::current().backend().text().layout(part, runs, {.width = width_, .wrapping = wrapping_});
}

std::size_t NSLayoutManager::paragraphOf(std::uint64_t offset) const {
  const auto after = std::partition_point(paragraphs_.begin(), paragraphs_.end(),
                                          [&](const Paragraph& paragraph) { return paragraph.start <= offset; });
  return static_cast<std::size_t>(after - paragraphs_.begin()) - 1;
}

NSLayoutManager::Line NSLayoutManager::lineOf(Caret caret) const {
  const Paragraph& paragraph = paragraphs_[paragraphOf(caret.offset)];
  const auto lines = paragraph.layout->lines();
  const std::uint64_t within = caret.offset - paragraph.start;
  std::size_t index = 0;
  while (index + 1 < lines.size() && lines[index + 1].start <= within) ++index;
  if (caret.upstream && index > 0 && lines[index].start == within) --index;
  return {paragraph, lines[index], index};
}

NSLayoutManager::Caret NSLayoutManager::caretAt(Point point) const {
  const auto below = std::partition_point(paragraphs_.begin() + 1, paragraphs_.end(),
                                          [&](const Paragraph& paragraph) { return paragraph.top <= point.y; });
  const Paragraph& paragraph = *(below - 1);
  const auto lines = paragraph.layout->lines();
  std::size_t index = 0;
  while (index + 1 < lines.size() && paragraph.top + lines[index + 1].top <= point.y) ++index;
  const std::size_t within = paragraph.layout->offsetAt(index, point.x);
  const bool atSoftBreak = index + 1 < lines.size() && within == lines[index + 1].start;
  return {paragraph.start + within, atSoftBreak};
}

Rect NSLayoutManager::caretRect(Caret caret) const {
  const Line line = lineOf(caret);
  const double x = line.paragraph.layout->caretX(line.index, caret.offset - line.paragraph.start);
  return {x, line.top(), 0, line.line.height};
}

void NSLayoutManager::eachLine(NSRange range, const std::function<void(const Line&)>& visit) const {
  for (std::size_t at = paragraphOf(range.location); at < paragraphs_.size(); ++at) {
    const Paragraph& paragraph = paragraphs_[at];
    if (paragraph.start > range.end()) return;
    const auto lines = paragraph.layout->lines();
    for (std::size_t index = 0; index < lines.size(); ++index) {
      const Line line{paragraph, lines[index], index};
      if (line.start() <= range.end() && line.end() >= range.location) visit(line);
    }
  }
}

std::vector<Rect> NSLayoutManager::rectsFor(NSRange range) const {
  std::vector<Rect> rects;
  eachLine(range, [&](const Line& line) {
    const auto& layout = *line.paragraph.layout;
    const auto xOf = [&](std::uint64_t offset) { return layout.caretX(line.index, offset - line.paragraph.start); };
    const double from = xOf(std::max(range.location, line.start()));
    double to = xOf(std::min(range.end(), line.end()));
    const bool includesNewline = line.end() == line.paragraph.end() && range.end() > line.end();
    if (includesNewline) to += kNewlineStretch;
    if (to != from) rects.emplace_back(std::min(from, to), line.top(), std::abs(to - from), line.line.height);
  });
  return rects;
}

NSLayoutManager::Caret NSLayoutManager::lineStart(Caret caret) const {
  return {lineOf(caret).start(), false};
}

NSLayoutManager::Caret NSLayoutManager::lineEnd(Caret caret) const {
  const Line line = lineOf(caret);
  return {line.end(), line.end() < line.paragraph.end()};
}

void NSLayoutManager::draw(port::Canvas& canvas, const Rect& visible, Point origin) const {
  for (const auto& paragraph : paragraphs_) {
    const Rect rect{origin.x, origin.y + paragraph.top, visible.width, paragraph.layout->size().height};
    if (rect.maxY() < visible.minY()) continue;
    if (rect.minY() > visible.maxY()) return;
    canvas.text(*paragraph.layout, rect.origin());
  }
}

}  // namespace platform
