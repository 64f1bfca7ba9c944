#include "Platform/AppKit/AlertText.h"

#include <cmath>

#include "Platform/AppKit/Palette.h"
#include "Platform/AppKit/TextRanges.h"

namespace platform {

namespace {

constexpr std::size_t kLongestText = 10'000;  // UTF-16 units
constexpr double kScrollerRoom = 20;

std::u16string shortened(std::u16string text) {
  if (text.size() <= kLongestText) return text;
  text.resize(previousCharacter(text, kLongestText));
  return text + u"…";
}

}  // namespace

/// The whole text, on a view that the scroll view moves.
class AlertText::Page final : public NSView {
 public:
  explicit Page(const NSLayoutManager& lines) : lines_(lines) {}
  bool isFlipped() const override { return true; }
  void draw(port::Canvas& canvas) override { lines_.draw(canvas, visibleRect(), {}); }

 private:
  const NSLayoutManager& lines_;
};

AlertText::AlertText(const Font& font) : look_{font, palette::kText, {}}, page_(std::make_shared<Page>(lines_)) {
  setUsesSingleLineMode(false);
  setSelectable(false);
  setFont(font);
  scroll_->setDrawsBackground(false);
  scroll_->setDocumentView(page_);
  addSubview(scroll_);
}

void AlertText::show(const std::string& utf8) {
  shown_ = NSAttributedString(shortened(plainText(utf8)));
  setStringValue(shown_.utf8String());
  lines_.invalidateAll();
  setNeedsLayout();
}

void AlertText::setBottomMargin(double margin) {
  bottomMargin_ = margin;
  setNeedsLayout();
}

double AlertText::heightFor(double width) {
  if (shown_.length() == 0) return 0;
  lines_.setWidth(width, port::Wrapping::words);
  lines_.layOut(shown_, look_);
  return std::ceil(lines_.usedSize().height);
}

void AlertText::layout() {
  const Rect visible{0, 0, bounds().width, std::max(0.0, bounds().height - bottomMargin_)};
  double width = visible.width, height = heightFor(width);
  const bool scrolls = height > visible.height;
  if (scrolls) height = heightFor(width -= kScrollerRoom);
  scroll_->setHasVerticalScroller(scrolls);
  scroll_->setFrame(visible);
  page_->setFrame({0, 0, width, height});
  scroll_->documentFrameDidChange();
}

void AlertText::scrollBy(double distance) {
  const Rect visible = scroll_->documentVisibleRect();
  scroll_->scrollTo({visible.x, visible.y + distance});
}

}  // namespace platform
