#pragma once

#include <string>
#include <vector>

#include "Platform/Port/Text.h"

namespace headless {

/// A layout whose widths follow from the characters alone: half an em for most, a whole one for wide characters (CJK,
/// Hangul, emoji), nothing for combining marks; lines are 1.25 em high with the baseline at 1 em, after the largest
/// font of the line.
class HeadlessTextLayout final : public platform::port::TextLayout {
 public:
  HeadlessTextLayout(std::u16string_view text, std::span<const platform::port::TextRun> runs,
                     const platform::port::TextOptions& options);

  std::span<const platform::port::TextLine> lines() const override { return lines_; }
  platform::Size size() const override { return size_; }
  double caretX(std::size_t line, std::size_t offset) const override;
  std::size_t offsetAt(std::size_t line, double x) const override;

  const std::u16string& text() const { return text_; }
  const std::vector<platform::port::TextRun>& runs() const { return runs_; }
  /// The last line ends in "…" because the text doesn't fit.
  bool isElided() const { return elided_; }

 private:
  void measure();
  void breakParagraph(std::size_t start, std::size_t end, const platform::port::TextOptions& options);
  std::size_t lineEnd(std::size_t start, std::size_t end, const platform::port::TextOptions& options) const;
  void addLine(std::size_t start, std::size_t end, bool wrapped);
  void elide(double width);
  double fontSizeAt(std::size_t at) const;

  std::u16string text_;
  std::vector<platform::port::TextRun> runs_;
  std::vector<double> x_;         ///< the sum of advances before each unit; one more than units
  std::vector<double> fontSize_;  ///< of each unit
  std::vector<platform::port::TextLine> lines_;
  platform::Size size_;
  bool elided_ = false;
};

/// Deterministic text measuring, the same on every machine.
class HeadlessText final : public platform::port::TextMeasure {
 public:
  std::shared_ptr<const platform::port::TextLayout> layout(std::u16string_view text,
                                                           std::span<const platform::port::TextRun> runs,
                                                           const platform::port::TextOptions& options) override;
};

}  // namespace headless
