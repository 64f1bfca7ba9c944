#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/AppKit/NSAttributedString.h"
#include "Platform/AppKit/NSLayoutManager.h"
#include "Platform/AppKit/NSTextContainer.h"
#include "Platform/AppKit/NSTextInputClient.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Export.h"
#include "Platform/Foundation/UndoManager.h"

namespace platform {

class NSTextView;
class Timer;

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
/// Subclasses override `shouldChangeTextInRanges` and `didChangeText` to approve and observe *every* change that the
/// user, the input method or a command makes. Main thread.
class PLATFORM_EXPORT NSTextView : public NSText, public NSTextInputClient {
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
  /// The end of the selection that stays when it is extended; the other end has the caret.
  std::uint64_t selectionAnchor() const { return anchor_; }
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
  virtual bool shouldChangeTextInRanges(const std::vector<NSRange>& ranges,
                                        const std::vector<std::u16string>& replacements);
  virtual void didChangeText() {}
  /// Text from a key or the input method, in place of the marked text or the selection.
  void insertText(const std::u16string& text) override;
  bool doCommand(std::string_view selector) override;
  /// One step back or on. In a composition `undo` takes the whole composition back and the input method forgets it.
  void undo();
  void redo();
  /// Forgets all steps back and on that target this view.
  void removeUndoSteps();
  /// Keys typed ahead in the queue for this view are dropped.
  void flushBufferedKeyEvents();

  // Marked text (NSTextView+InputMethod.cpp).
  bool hasMarkedText() const { return marked_.length > 0; }
  NSRange markedRange() const { return marked_; }
  /// The input method's preedit in place of the marked text or the selection; `caret` inside `text`. Empty text: the
  /// composition ended with nothing.
  void setMarkedText(const std::u16string& text, std::size_t caret) override;
  /// The marked text becomes ordinary text, and the input method forgets it.
  virtual void unmarkText();
  NSTextInputContext& inputContext() { return inputContext_; }
  /// Hands a key to the input method and, where there is none for it or it leaves the key, to the key bindings.
  void interpretKeyEvent(const EventPointer& event);
  void interpretKeyDirectly(const EventPointer& event) override;
  void deleteSurrounding(std::ptrdiff_t offset, std::size_t length) override;
  std::optional<port::TextInputState> textInputState() override;
  void windowKeyChanged(bool key) override;

  // Layout and drawing (NSTextView+Layout.cpp).
  /// After a change of the container call `setNeedsLayout`.
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
  /// The caret's rectangle in view coordinates: the selection's moving end, or the caret inside the marked text.
  Rect caretRect() const;
  /// Whether the blinking caret is to be seen at this moment.
  bool isCaretVisible() const { return caretTimer_ != nullptr && caretOn_; }
  /// How many paragraphs were laid out so far; a measure of what an edit costs.
  std::uint64_t paragraphsLaidOut() const { return lines_.paragraphsLaidOut(); }
  /// Base: in the scroll view around the view, if there is one.
  virtual void scrollRangeToVisible(NSRange range);
  void draw(port::Canvas& canvas) override;
  void layout() override;

  // Events (NSTextView+Events.cpp): the first responder's part.
  bool acceptsFirstResponder() override;
  bool becomeFirstResponder() override;
  bool resignFirstResponder() override;
  void keyDown(const EventPointer& event) override;
  void mouseDown(const EventPointer& event) override;
  port::Cursor cursorAt(Point inView) const override;
  void viewDidMoveToWindow() override;

 protected:
  void frameDidChange(const Rect& old) override;

 private:
  using Caret = NSLayoutManager::Caret;
  /// A replacement of text, with all that is to hold afterwards.
  struct Edit {
    NSRange range;
    NSAttributedString with;
    std::uint64_t caret = 0;        ///< inside `with`
    std::optional<NSRange> marked;  ///< nothing: the marked text moves along, or ends where the edit meets it
  };
  struct Movement {
    Caret caret;
    std::optional<double> column;  ///< kept for the next move up or down
  };
  using Move = Movement (NSTextView::*)() const;
  using Command = void (NSTextView::*)();

  void select(std::uint64_t anchor, Caret head);
  void selectionMayHaveChanged(NSRange before);
  NSTextViewDelegate* delegate(std::shared_ptr<NSTextViewDelegate>& hold) const;
  void beginEditing();

  bool perform(Edit edit);
  void apply(const Edit& edit);
  bool moveMarkedTextAlong(NSRange edited, std::uint64_t newLength);
  void replaceForUndo(NSRange range, const NSAttributedString& with);
  void undoComposition();
  void endComposition();

  bool move(std::string_view name, bool extending);
  Movement left() const;
  Movement right() const;
  Movement wordLeft() const;
  Movement wordRight() const;
  Movement up() const;
  Movement down() const;
  Movement pageUp() const;
  Movement pageDown() const;
  Movement lineStart() const;
  Movement lineEnd() const;
  Movement paragraphStart() const;
  Movement paragraphEnd() const;
  Movement documentStart() const;
  Movement documentEnd() const;
  Movement vertically(double distance) const;
  double pageDistance() const;
  void deleteRange(std::uint64_t other);
  void deleteBackward();
  void deleteForward();
  void deleteWordBackward();
  void deleteWordForward();
  void insertNewline();
  void insertTab();
  void selectAll();
  void copy();
  void cut();
  void paste();

  Font typingFont() const;
  bool layOutLines() const;
  Caret caretAt(Point point) const;
  double lineWidth() const;
  void sizeToFit();
  void textChanged();
  void drawSelection(port::Canvas& canvas) const;

  bool isFirstResponder() const;
  void restartCaret();
  void stopCaret();
  NSRange selectionUnit(std::uint64_t at, int clicks) const;
  void extendByUnit(NSRange origin, Caret to, int clicks);
  void trackSelection(NSRange origin, int clicks);

  NSAttributedString storage_;
  NSRange selection_;
  std::uint64_t anchor_ = 0;
  Caret head_;
  std::optional<double> column_;
  NSRange marked_;
  int compositionSteps_ = 0;
  bool compositionIsUndoable_ = false;

  std::optional<Font> font_;
  Color textColor_{0.1, 0.1, 0.1, 1};
  Color backgroundColor_{1, 1, 1, 1};
  bool drawsBackground_ = true;
  bool richText_ = true;
  bool allowsUndo_ = false;
  bool editable_ = true;
  bool selectable_ = true;
  bool editingBegan_ = false;
  bool verticallyResizable_ = false;
  bool horizontallyResizable_ = false;
  Size minSize_;
  Size maxSize_{1e7, 1e7};
  NSTextContainer container_;
  mutable NSLayoutManager lines_;

  std::weak_ptr<NSTextViewDelegate> delegate_;
  NSTextViewDelegate* selfDelegate_ = nullptr;
  UndoManager undo_;
  NSTextInputContext inputContext_{*this};
  std::shared_ptr<Timer> caretTimer_;
  bool caretOn_ = false;
  bool focused_ = false;
};

}  // namespace platform
