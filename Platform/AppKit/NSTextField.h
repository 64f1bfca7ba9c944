#pragma once

#include <memory>
#include <string>

#include "Platform/AppKit/NSControl.h"

namespace platform {

class NSClipView;
class NSTextField;
class NSTextView;

class PLATFORM_EXPORT NSTextFieldDelegate {
 public:
  virtual ~NSTextFieldDelegate() = default;
  /// The user, the input method or an editing command changed the text.
  virtual void controlTextDidChange(NSTextField& /*field*/) {}
  /// The field lost the focus, or the user pressed Return or Tab in it.
  virtual void controlTextDidEndEditing(NSTextField& /*field*/) {}
};

/// One line of text, without a border, that scrolls sideways. While it has the focus an editor does the work: an
/// `NSTextView` inside the field, with one view between them, is the window's first responder then, and gets every
/// press in the field from it. Return and Tab end the editing and select the text anew. Main thread.
class PLATFORM_EXPORT NSTextField : public NSControl {
 public:
  NSTextField();
  explicit NSTextField(const Rect& frame);
  ~NSTextField() override;

  bool isFlipped() const override { return true; }

  /// The text as it stands, also in the middle of editing and composing.
  std::string stringValue() const;
  /// Line ends become blanks, in a field of one line. The delegate doesn't hear of it; editing goes on with the new
  /// text, a composition ends.
  void setStringValue(const std::string& utf8);
  /// True at first. A field of several lines keeps line ends; how it shows and scrolls them is its subclass's business.
  bool usesSingleLineMode() const { return singleLine_; }
  void setUsesSingleLineMode(bool singleLine) { singleLine_ = singleLine; }
  /// Shown while there is no text.
  const std::string& placeholderString() const { return placeholder_; }
  void setPlaceholderString(std::string utf8);
  Font font() const { return font_; }
  void setFont(const Font& font);
  bool isSelectable() const { return selectable_; }
  /// A field whose text can't be selected can't be edited either.
  void setSelectable(bool selectable) { selectable_ = selectable; }
  void setDelegate(std::weak_ptr<NSTextFieldDelegate> delegate) { delegate_ = std::move(delegate); }

  /// Null while the text isn't being edited.
  std::shared_ptr<NSTextView> currentEditor() const;

  bool acceptsFirstResponder() override;
  /// Hands the focus on to the editor, all of the text selected.
  bool becomeFirstResponder() override;
  void mouseDown(const EventPointer& event) override;
  NSView* hitTest(Point point) override;
  port::Cursor cursorAt(Point inView) const override;
  void draw(port::Canvas& canvas) override;
  void layout() override;
  void viewDidMoveToWindow() override;

 private:
  class Editor;

  std::shared_ptr<const port::TextLayout> lineOf(const std::u16string& text, const Color& color) const;
  double topOf(const port::TextLayout& line) const;
  void placeEditor();
  void editorChanged();
  void returnPressed();
  void endEditing();
  void tellEnd();

  std::u16string text_;
  std::string placeholder_;
  Font font_;
  bool singleLine_ = true;
  bool selectable_ = true;
  std::weak_ptr<NSTextFieldDelegate> delegate_;
  std::shared_ptr<NSClipView> clip_;  ///< while the text is being edited, like the editor in it
  std::shared_ptr<Editor> editor_;
};

}  // namespace platform
