#pragma once

#include <QObject>
#include <QTextLayout>
#include <memory>
#include <thread>
#include <vector>

#include "Platform/Port/Text.h"

class QPainter;

namespace desktop {

/// A text shaped by the toolkit, one of its layouts for each paragraph.
class DesktopTextLayout final : public platform::port::TextLayout {
 public:
  DesktopTextLayout(std::u16string_view text, std::span<const platform::port::TextRun> runs,
                    const platform::port::TextOptions& options);

  std::span<const platform::port::TextLine> lines() const override { return lines_; }
  platform::Size size() const override { return size_; }
  double caretX(std::size_t line, std::size_t offset) const override;
  std::size_t offsetAt(std::size_t line, double x) const override;
  void draw(QPainter& painter, const QPointF& topLeft) const;

 private:
  struct Paragraph {
    std::size_t start = 0;
    std::size_t firstLine = 0;
    std::unique_ptr<QTextLayout> layout;
  };

  void addParagraph(const QString& text, std::size_t start, std::span<const platform::port::TextRun> runs,
                    const platform::port::TextOptions& options);
  void elide(const QString& text, std::span<const platform::port::TextRun> runs,
             const platform::port::TextOptions& options);
  const Paragraph& paragraphOf(std::size_t line) const;

  std::vector<Paragraph> paragraphs_;
  std::vector<platform::port::TextLine> lines_;
  platform::Size size_;
};

/// Another thread looks for the fonts of the usual scripts while windows are made.
class DesktopText final : public platform::port::TextMeasure {
 public:
  /// A thread that reads the system's font configuration. It needs nothing of the toolkit.
  static std::jthread readConfiguration();

  /// The configuration's reader outlives this.
  explicit DesktopText(std::jthread& configuration);
  std::shared_ptr<const platform::port::TextLayout> layout(std::u16string_view text,
                                                           std::span<const platform::port::TextRun> runs,
                                                           const platform::port::TextOptions& options) override;

 private:
  void finishReading();

  std::jthread fontReader_;
  QObject atFirstTurn_;
};

}  // namespace desktop
