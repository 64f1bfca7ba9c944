#include "Backends/Desktop/DesktopText.h"

#include <fontconfig/fontconfig.h>
#include <pthread.h>
#include <sched.h>

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QTextLine>
#include <algorithm>
#include <cmath>

namespace desktop {

using platform::port::TextLine;
using platform::port::TextOptions;
using platform::port::TextRun;
using platform::port::Wrapping;

namespace {

constexpr char16_t kEllipsis = u'…';
constexpr double kUnlimited = 1e6;  // the toolkit's widths end a little above

/// The interface font, with gothic faces for Hangul before whatever the system would pick. Glyphs keep their outlines:
/// text is as wide at every scale of the screen, and fitting each glyph to the pixels costs more than all else that is
/// drawn.
QFont interfaceFont(const platform::Font& font) {
  static const QFont base = [] {
    QFont general = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    QStringList families{general.family()};
    for (const auto& gothic : {QStringLiteral("Noto Sans CJK KR"), QStringLiteral("NanumGothic")})
      if (QFontDatabase::hasFamily(gothic)) families.append(gothic);
    general.setFamilies(families);
    general.setHintingPreference(QFont::PreferNoHinting);
    return general;
  }();
  QFont result = base;
  result.setPixelSize(std::max(1, static_cast<int>(std::lround(font.size))));
  result.setBold(font.bold);
  return result;
}

QColor colorOf(const platform::Color& color) {
  const auto component = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
  return QColor::fromRgbF(component(color.red), component(color.green), component(color.blue), component(color.alpha));
}

QTextCharFormat formatOf(const TextRun& run) {
  QTextCharFormat format;
  format.setFont(interfaceFont(run.font));
  format.setForeground(colorOf(run.color));
  format.setFontUnderline(run.underlined);
  return format;
}

QTextOption optionOf(const TextOptions& options) {
  QTextOption result;
  result.setFlags(QTextOption::IncludeTrailingSpaces);
  if (options.elided || options.wrapping == Wrapping::none)
    result.setWrapMode(QTextOption::NoWrap);
  else
    result.setWrapMode(options.wrapping == Wrapping::words ? QTextOption::WrapAtWordBoundaryOrAnywhere
                                                           : QTextOption::WrapAnywhere);
  return result;
}

/// The runs inside a paragraph, as offsets into it.
QList<QTextLayout::FormatRange> formatsIn(std::span<const TextRun> runs, std::size_t start, std::size_t length) {
  QList<QTextLayout::FormatRange> formats;
  for (const TextRun& run : runs) {
    if (run.start >= start + length || run.length == 0) break;
    const std::size_t end = run.length > start + length - run.start ? start + length : run.start + run.length;
    const std::size_t begin = std::max(run.start, start);
    if (begin < end) formats.append({static_cast<int>(begin - start), static_cast<int>(end - begin), formatOf(run)});
  }
  return formats;
}

/// The font of the character at `offset`, or of the last run: an empty line is as high as what would be typed there.
platform::Font fontAt(std::span<const TextRun> runs, std::size_t offset) {
  platform::Font font;
  for (const TextRun& run : runs) {
    if (run.start > offset) break;
    font = run.font;
  }
  return runs.empty() || runs.front().start <= offset ? font : runs.front().font;
}

bool endsParagraph(QChar character) {
  return character == u'\n' || character == QChar::ParagraphSeparator || character == QChar::LineSeparator;
}

/// Moves a short-lived thread away from the processor that this one is on. A new one is left beside its maker until the
/// system next balances the load, which is milliseconds later, and they would take turns.
void runElsewhere(std::jthread& thread) {
  cpu_set_t processors;
  if (sched_getaffinity(0, sizeof processors, &processors) != 0) return;
  CPU_CLR(static_cast<std::size_t>(sched_getcpu()), &processors);
  if (CPU_COUNT(&processors) > 0) pthread_setaffinity_np(thread.native_handle(), sizeof processors, &processors);
}

}  // namespace

DesktopTextLayout::DesktopTextLayout(std::u16string_view text, std::span<const TextRun> runs,
                                     const TextOptions& options) {
  QString whole = QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
  if (options.elided) {
    std::replace_if(whole.begin(), whole.end(), endsParagraph, QChar(u' '));
    elide(whole, runs, options);
    return;
  }
  qsizetype start = 0;
  for (qsizetype at = 0; at <= whole.size(); ++at) {
    if (at < whole.size() && !endsParagraph(whole[at])) continue;
    addParagraph(whole.mid(start, at - start), static_cast<std::size_t>(start), runs, options);
    start = at + 1;
  }
}

void DesktopTextLayout::addParagraph(const QString& text, std::size_t start, std::span<const TextRun> runs,
                                     const TextOptions& options) {
  auto layout = std::make_unique<QTextLayout>(text, interfaceFont(fontAt(runs, start)));
  layout->setTextOption(optionOf(options));
  layout->setFormats(formatsIn(runs, start, static_cast<std::size_t>(text.size())));
  layout->setCacheEnabled(true);
  const std::size_t firstLine = lines_.size();
  layout->beginLayout();
  for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
    line.setLineWidth(options.wrapping == Wrapping::none || options.elided ? kUnlimited : std::max(1.0, options.width));
    line.setPosition({0, size_.height});
    lines_.push_back({start + static_cast<std::size_t>(line.textStart()), static_cast<std::size_t>(line.textLength()),
                      size_.height, line.height(), line.ascent(), line.naturalTextWidth()});
    size_.height += line.height();
    size_.width = std::max(size_.width, line.naturalTextWidth());
  }
  layout->endLayout();
  paragraphs_.push_back({start, firstLine, std::move(layout)});
}

void DesktopTextLayout::elide(const QString& text, std::span<const TextRun> runs, const TextOptions& options) {
  addParagraph(text, 0, runs, options);
  if (size_.width <= options.width) return;
  const auto fit = [&](double width) {
    std::size_t end = offsetAt(0, width);
    while (end > 0 && caretX(0, end) > width)
      end = paragraphs_.front().layout->previousCursorPosition(static_cast<int>(end));
    return end;
  };
  const double ellipsisWidth = QFontMetricsF(interfaceFont(fontAt(runs, 0))).horizontalAdvance(QChar(kEllipsis));
  const std::size_t kept = fit(options.width - ellipsisWidth);
  paragraphs_.clear();
  lines_.clear();
  size_ = {};
  addParagraph(text.left(static_cast<qsizetype>(kept)) + QChar(kEllipsis), 0, runs, options);
  lines_.front().length = kept;
}

const DesktopTextLayout::Paragraph& DesktopTextLayout::paragraphOf(std::size_t line) const {
  const auto after = std::upper_bound(paragraphs_.begin(), paragraphs_.end(), line,
                                      [](std::size_t wanted, const Paragraph& p) { return wanted < p.firstLine; });
  return *std::prev(after);
}

double DesktopTextLayout::caretX(std::size_t line, std::size_t offset) const {
  if (line >= lines_.size()) return 0;
  const TextLine& shown = lines_[line];
  const Paragraph& paragraph = paragraphOf(line);
  int position = static_cast<int>(std::clamp(offset, shown.start, shown.start + shown.length) - paragraph.start);
  // A caret never stands inside a character that the user sees as one.
  if (!paragraph.layout->isValidCursorPosition(position)) position = paragraph.layout->previousCursorPosition(position);
  return paragraph.layout->lineAt(static_cast<int>(line - paragraph.firstLine)).cursorToX(position);
}

std::size_t DesktopTextLayout::offsetAt(std::size_t line, double x) const {
  if (line >= lines_.size()) return 0;
  const TextLine& shown = lines_[line];
  const Paragraph& paragraph = paragraphOf(line);
  const QTextLine native = paragraph.layout->lineAt(static_cast<int>(line - paragraph.firstLine));
  const auto found = paragraph.start + static_cast<std::size_t>(std::max(0, native.xToCursor(x)));
  return std::clamp(found, shown.start, shown.start + shown.length);
}

void DesktopTextLayout::draw(QPainter& painter, const QPointF& topLeft) const {
  for (const Paragraph& paragraph : paragraphs_) paragraph.layout->draw(&painter, topLeft);
}

std::jthread DesktopText::readConfiguration() {
  std::jthread reader([] { FcInit(); });
  runElsewhere(reader);
  return reader;
}

DesktopText::DesktopText(std::jthread& configuration)
    : fontReader_([&configuration] {
        configuration.join();
        // What the toolkit finds for a script it keeps for all threads.
        constexpr std::u16string_view kScripts = u"Mirelo 미렐로";
        const TextRun run{0, kScripts.size(), {}, {}};
        DesktopTextLayout(kScripts, {&run, 1}, {});
      }) {
  runElsewhere(fontReader_);
  // The toolkit's globals go when the process ends, and a program without any text might end early.
  QMetaObject::invokeMethod(
      &atFirstTurn_, [this] { finishReading(); }, Qt::QueuedConnection);
}

void DesktopText::finishReading() {
  if (fontReader_.joinable()) fontReader_.join();
}

std::shared_ptr<const platform::port::TextLayout> DesktopText::layout(std::u16string_view text,
                                                                      std::span<const TextRun> runs,
                                                                      const TextOptions& options) {
  finishReading();
  return std::make_shared<DesktopTextLayout>(text, runs, options);
}

}  // namespace desktop
