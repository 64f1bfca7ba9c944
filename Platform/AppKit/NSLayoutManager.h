#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "Platform/AppKit/NSAttributedString.h"
#include "Platform/Export.h"
#include "Platform/Port/Canvas.h"
#include "Platform/Port/Text.h"

namespace platform {

/// A text's lines: laid out paragraph by paragraph, and after an edit only the paragraphs that it touched, so that
/// typing in a long text costs what its paragraph costs. Points, origin at the text's top left, y grows downwards.
/// Everything below the first three sections needs `layOut` to have run since the last change. Main thread.
class PLATFORM_EXPORT NSLayoutManager {
 public:
  /// What the attributes leave open.
  struct Look {
    Font font;
    Color color;
    NSRange underlined;
  };
  /// A caret's place. At a soft line break the same offset is the end of one line and the start of the next; `upstream`
  /// chooses the former.
  struct Caret {
    std::uint64_t offset = 0;
    bool upstream = false;
    friend bool operator==(const Caret&, const Caret&) = default;
  };

  // The width the lines have, without limit where `wrapping` is none.
  void setWidth(double width, port::Wrapping wrapping);

  // What changed.
  void invalidateAll();
  /// The paragraphs of a range look different now.
  void invalidate(NSRange range);
  /// `text` is the text after `old` was replaced by `newLength` units.
  void replaced(const std::u16string& text, NSRange old, std::uint64_t newLength);

  /// Brings the lines up to date.
  void layOut(const NSAttributedString& text, const Look& look);
  /// How many paragraphs were laid out since the manager was made.
  std::uint64_t paragraphsLaidOut() const { return laidOut_; }

  Size usedSize() const { return used_; }
  Caret caretAt(Point point) const;
  /// A rectangle without width.
  Rect caretRect(Caret caret) const;
  /// One a line; a selected newline shows as a stretch behind the line's end.
  std::vector<Rect> rectsFor(NSRange range) const;
  /// The offsets at which the caret's line starts and ends.
  Caret lineStart(Caret caret) const;
  Caret lineEnd(Caret caret) const;
  /// Draws the lines that meet `visible`.
  void draw(port::Canvas& canvas, const Rect& visible, Point origin) const;

 private:
  struct Paragraph {
    std::uint64_t start = 0;
    std::uint64_t length = 0;  ///< without the newline
    double top = 0;
    std::shared_ptr<const port::TextLayout> layout;
    std::uint64_t end() const { return start + length; }
  };
  struct Line {
    const Paragraph& paragraph;
    const port::TextLine& line;
    std::size_t index;
    std::uint64_t start() const { return paragraph.start + line.start; }
    std::uint64_t end() const { return start() + line.length; }
    double top() const { return paragraph.top + line.top; }
  };

  std::size_t paragraphOf(std::uint64_t offset) const;
  Line lineOf(Caret caret) const;
  void eachLine(NSRange range, const std::function<void(const Line&)>& visit) const;
  std::shared_ptr<const port::TextLayout> layOut(const Paragraph& paragraph, const NSAttributedString& text,
                                                 const Look& look) const;

  std::vector<Paragraph> paragraphs_{Paragraph{}};
  bool split_ = false;
  double width_ = 0;
  port::Wrapping wrapping_ = port::Wrapping::none;
  Size used_;
  std::uint64_t laidOut_ = 0;
};

}  // namespace platform
