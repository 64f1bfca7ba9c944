#include "Platform/AppKit/NSTextField.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/AppKit/NSClipView.h"
#include "Platform/AppKit/NSTextView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/Palette.h"
#include "Platform/AppKit/TextRanges.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Unicode.h"

namespace platform {

namespace {

constexpr double kPadding = 2;  ///< between the field's sides and the text
constexpr double kUnlimited = 1e7;
/// A line of it is centred; other lines share its baseline, however high the fonts are that they use.
constexpr const char16_t* kReferenceText = u"가g";

std::u16string onOneLine(std::u16string text) {
  std::ranges::replace_if(
      text, [](char16_t unit) { return unit == u'\n' || unit == u'\t'; }, u' ');
  return text;
}

}  // namespace

/// The text view that stands in for the field while it is edited. It may outlive the field.
class NSTextField::Editor final : public NSTextView {
 public:
  explicit Editor(NSTextField& field) : field_(&field) {}
  void detach() { field_ = nullptr; }
  /// A press that the field hands back.
  void take(const EventPointer& press) { NSTextView::mouseDown(press); }

  void insertText(const std::u16string& text) override { NSTextView::insertText(onOneLine(text)); }
  bool doCommand(std::string_view selector) override {
    if (selector != "insertNewline:" && selector != "insertTab:") return NSTextView::doCommand(selector);
    if (field_) field_->returnPressed();
    return true;
  }
  void didChangeText() override {
    if (field_) field_->editorChanged();
  }
  bool resignFirstResponder() override {
    const auto keepAlive = shared_from_this();
    NSTextView::resignFirstResponder();
    if (field_) field_->endEditing();
    return true;
  }
  void mouseDown(const EventPointer& press) override {
    if (field_) field_->mouseDown(press);
  }
  void scrollRangeToVisible(NSRange range) override;

 protected:
  void frameDidChange(const Rect& old) override {
    NSTextView::frameDidChange(old);
    if (field_ && frame().size() != old.size()) field_->placeEditor();
  }

 private:
  NSTextField* field_;
};

void NSTextField::Editor::scrollRangeToVisible(NSRange range) {
  NSView* const clip = superview();
  if (!clip) return;
  const bool isCaret = range.length == 0 && range.location == selectedRange().end();
  const Rect shown = isCaret ? caretRect() : rectForRange(range);
  const double width = clip->bounds().width, last = std::max(0.0, frame().width - width);
  double x = clip->bounds().x;
  x = std::max(x, shown.maxX() + kPadding - width);
  x = std::min(x, shown.minX() - kPadding);
  clip->setBoundsOrigin({std::round(std::clamp(x, 0.0, last)), 0});
}

NSTextField::NSTextField() : NSTextField(Rect{}) {}

NSTextField::NSTextField(const Rect& frame) : NSControl(frame) {}

NSTextField::~NSTextField() {
  if (editor_) editor_->detach();
}

std::string NSTextField::stringValue() const {
  return utf8(text_);
}

void NSTextField::setStringValue(const std::string& utf8) {
  text_ = singleLine_ ? onOneLine(plainText(utf8)) : plainText(utf8);
  setNeedsDisplay();
  if (!editor_) return;
  const auto editor = editor_;
  editor->removeUndoSteps();
  editor->setTextStorage(NSAttributedString(text_, editor->typingAttributes()));
  editor->setSelectedRange({text_.size(), 0});
}

void NSTextField::setPlaceholderString(std::string utf8) {
  placeholder_ = std::move(utf8);
  setNeedsDisplay();
}

void NSTextField::setFont(const Font& font) {
  font_ = font;
  if (editor_) editor_->setFont(font);
  setNeedsDisplay();
}

std::shared_ptr<NSTextView> NSTextField::currentEditor() const {
  return editor_;
}

bool NSTextField::acceptsFirstResponder() {
  return selectable_ && !isHiddenOrHasHiddenAncestor();
}

bool NSTextField::becomeFirstResponder() {
  if (!window() || editor_) return false;
  const auto editor = std::make_shared<Editor>(*this);
  editor->setRichText(false);
  editor->setAllowsUndo(true);
  editor->setDrawsBackground(false);
  editor->setFont(font_);
  editor->setTextColor(palette::kText);
  editor->setHorizontallyResizable(true);
  editor->setVerticallyResizable(true);
  editor->textContainer() = {.containerSize = {kUnlimited, kUnlimited},
                             .lineFragmentPadding = kPadding,
                             .lineBreakMode = LineBreakMode::byClipping};
  editor->setTextStorage(NSAttributedString(text_, editor->typingAttributes()));
  editor_ = editor;
  clip_ = std::make_shared<NSClipView>();
  clip_->addSubview(editor);
  addSubview(clip_);
  layout();
  if (!window()->makeFirstResponder(editor)) {
    endEditing();
    return false;
  }
  editor->setSelectedRange({0, text_.size()});
  setNeedsDisplay();
  return true;
}

void NSTextField::endEditing() {
  const auto keepAlive = shared_from_this();
  const auto editor = std::exchange(editor_, nullptr);
  if (!editor) return;
  editor->detach();
  std::exchange(clip_, nullptr)->removeFromSuperview();
  setNeedsDisplay();
  tellEnd();
}

void NSTextField::returnPressed() {
  const auto keepAlive = shared_from_this();
  tellEnd();
  if (editor_) editor_->setSelectedRange({0, text_.size()});
}

void NSTextField::tellEnd() {
  if (const auto delegate = delegate_.lock()) delegate->controlTextDidEndEditing(*this);
}

void NSTextField::editorChanged() {
  const auto keepAlive = shared_from_this();
  placeEditor();
  setNeedsDisplay();
  // What the input method commits may be what it showed before.
  if (std::exchange(text_, editor_->textStorage().string()) == text_) return;
  if (const auto delegate = delegate_.lock()) delegate->controlTextDidChange(*this);
}

void NSTextField::mouseDown(const EventPointer& event) {
  if (!editor_) return NSControl::mouseDown(event);
  const auto editor = editor_;
  editor->take(event);
}

NSView* NSTextField::hitTest(Point point) {
  NSView* const hit = NSControl::hitTest(point);
  // The editor may be lower than the field; what is beside it belongs to it too.
  return hit && hit == clip_.get() ? editor_.get() : hit;
}

port::Cursor NSTextField::cursorAt(Point /*inView*/) const {
  return selectable_ ? port::Cursor::text : port::Cursor::arrow;
}

std::shared_ptr<const port::TextLayout> NSTextField::lineOf(const std::u16string& text, const Color& color) const {
  const port::TextRun run{0, text.size(), font_, color};
  return Session::current().backend().text().layout(text, {&run, 1}, {});
}

double NSTextField::topOf(const port::TextLayout& line) const {
  const auto reference = lineOf(kReferenceText, palette::kText);
  const double baseline =
      std::floor((bounds().height - reference->size().height) / 2) + reference->lines().front().baseline;
  return baseline - line.lines().front().baseline;
}

void NSTextField::draw(port::Canvas& canvas) {
  const bool showsPlaceholder = text_.empty();
  if (editor_ && !showsPlaceholder) return;
  const auto line =
      showsPlaceholder ? lineOf(utf16(placeholder_), palette::kInactiveText) : lineOf(text_, palette::kText);
  canvas.text(*line, {kPadding, topOf(*line)});
}

void NSTextField::layout() {
  NSControl::layout();
  if (!editor_) return;
  clip_->setFrame(bounds());
  editor_->setMinSize({bounds().width, 0});
  editor_->layout();
  placeEditor();
}

void NSTextField::placeEditor() {
  const Point origin{0, topOf(*lineOf(editor_->textStorage().string(), palette::kText))};
  editor_->setFrame({origin, editor_->frame().size()});
}

void NSTextField::viewDidMoveToWindow() {
  if (!window()) endEditing();
}

}  // namespace platform
