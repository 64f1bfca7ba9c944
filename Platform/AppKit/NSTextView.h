#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/AppKit/NSAttributedString.h"
#include "Platform/AppKit/NSTextContainer.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Export.h"
#include "Platform/Foundation/UndoManager.h"

namespace platform {

class NSTextView;

/// Base of the views that hold editable text.
class PLATFORM_EXPORT NSText : public NSView {
 public:
  using NSView::NSView;
};

class PLATFORM_EXPORT NSTextViewDelegate {
 public:
  virtual ~NSTextViewDelegate() = default;
  virtual void textViewDidChangeSelection(NSTextView& /*view*/) {}
  virtual void textDidBeginEditing(NSTextView& /*view*/) {}
};

/// The input method's side of a text view.
class PLATFORM_EXPORT NSTextInputContext {
 public:
  explicit NSTextInputContext(NSTextView& view) : view_(view) {}
  /// Makes the input method forget what it is composing; nothing is committed. The text stays as it is.
  void discardMarkedText();

 private:
  NSTextView& view_;
};

/// An editable text with selection, marked text from an input method, undo, and the key bindings of a desktop text box.
/// Offsets are UTF-16 units; every range given from outside is clamped to the text and to whole surrogate pairs.
/// Subclasses override `shouldChangeTextInRanges` and `didChangeText` to approve and observe *every* change that the user,
/// the input method or a command makes. Main thread.
class PLATFORM_EXPORT NSTextView : public NSText {
 public:
  NSTextView();
  explicit NSTextView(const Rect& frame);
  ~NSTextView() override;

  bool isFlipped() const override { return true; }

  // Text (NSTextView.cpp).
  const NSAttributedString& textStorage() const { return storage_; }
  /// Replaces the whole storage without asking for approval; the selection is clamped, marked text ends.
  void setTextStorage(NSAttributedString text);
  std::string string() const { return storage_.utf8String(); }
  NSRange selectedRange() const { return selection_; }
  /// Reports a selection change when it differs. Ends marked text that it leaves.
  void setSelectedRange(NSRange range);
  std::optional<Font> font() const { return font_; }
  void setFont(const Font& font);
  Color textColor() const { return textColor_; }
  void setTextColor(const Color& color);
  Attributes typingAttributes() const;
  bool isRichText() const { return richText_; }
  void setRichText(bool rich) { richText_ = rich; }
  bool allowsUndo() const { return allowsUndo_; }
  void setAllowsUndo(bool allows) { allowsUndo_ = allows; }
  bool isEditable() const { return editable_; }
  void setEditable(bool editable);
  bool isSelectable() const { return selectable_; }
  void setSelectable(bool selectable);
  bool drawsBackground() const { return drawsBackground_; }
  void setDrawsBackground(bool draws);
  Color backgroundColor() const { return backgroundColor_; }
  void setBackgroundColor(const Color& color);
  /// Owned, borrowed by the view: weak.
  void setTextViewDelegate(std::weak_ptr<NSTextViewDelegate> delegate) { delegate_ = std::move(delegate); }
  /// For a view that is its own delegate; not owned.
  void setSelfAsTextViewDelegate(NSTextViewDelegate* self) { selfDelegate_ = self; }
  UndoManager& undoManager() { return undo_; }

  // Editing (NSTextView+Editing.cpp).
  /// Asks approval, replaces, reports: what typing does. Refused or not editable: false, nothing changes.
  bool replaceCharacters(NSRange range, const std::u16string& with);
  /// Base: with `allowsUndo`, keeps an undo step; answers true.
  virtual bool shouldChangeTextInRanges(const std::vector<NSRange>& ranges, const std::vector<std::u16string>& replacements);
  virtual void didChangeText() {}
  /// Text from a key or the input method, in place of the marked text or the selection.
  virtual void insertText(const std::u16string& text);
  bool doCommand(std::string_view selector) override;
  /// Keys typed ahead in the queue for this view are dropped.
  void flushBufferedKeyEvents();

  // Marked text (NSTextView+InputMethod.cpp).
  bool hasMarkedText() const { return marked_.length > 0; }
  NSRange markedRange() const { return marked_; }
  /// The input method's preedit in place of the marked text or the selection; `caret` inside `text`. Empty text: the
  /// composition ended with nothing.
  virtual void setMarkedText(const std::u16string& text, std::size_t caret);
  /// The marked text becomes ordinary text.
  virtual void unmarkText();
  NSTextInputContext& inputContext() { return inputContext_; }
  /// Hands a key to the input method and, where there is none for it or it leaves the key, to the key bindings.
  void interpretKeyEvent(const EventPointer& event);
  /// The caret's rectangle in view coordinates: the selection's end, or the caret inside the marked text.
  Rect caretRect() const;

  // Layout and drawing (NSTextView+Layout.cpp).
  NSTextContainer& textContainer() { return container_; }
  const NSTextContainer& textContainer() const { return container_; }
  Size minSize() const { return minSize_; }
  void setMinSize(Size size);
  Size maxSize() const { return maxSize_; }
  void setMaxSize(Size size);
  void setVerticallyResizable(bool resizable) { verticallyResizable_ = resizable; }
  bool isVerticallyResizable() const { return verticallyResizable_; }
  void setHorizontallyResizable(bool resizable) { horizontallyResizable_ = resizable; }
  bool isHorizontallyResizable() const { return horizontallyResizable_; }
  /// The offset nearest to a point in view coordinates.
  std::uint64_t characterIndexAt(Point point) const;
  Rect rectForRange(NSRange range) const;
  void scrollRangeToVisible(NSRange range);
  void draw(port::Canvas& canvas) override;
  void layout() override;

  // Events (NSTextView+Events.cpp): the first responder's part.
  bool acceptsFirstResponder() override;
  bool becomeFirstResponder() override;
  bool resignFirstResponder() override;
  void keyDown(const EventPointer& event) override;
  void mouseDown(const EventPointer& event) override;
  port::Cursor cursorAt(Point inView) const override;
};

}  // namespace platform
