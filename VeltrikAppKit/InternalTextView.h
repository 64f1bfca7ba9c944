#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/AppKit/NSTextView.h"
#include "VeltrikAppKit/Protocols/VeltrikTextInputView.h"
#include "VeltrikAppKit/Protocols/VeltrikTextInputViewDelegate.h"

namespace veltrik {

/// The text of a `TextInputNSView`. It judges keys before the input method does, asks the delegate about every edit,
/// and keeps its steps back as snapshots of the whole text. Made with std::make_shared. Main thread.
class InternalTextView final : public platform::NSTextView,
                               public VeltrikTextInputView,
                               private platform::NSTextViewDelegate {
 public:
  InternalTextView();

  void setTextInputViewDelegate(std::weak_ptr<VeltrikTextInputViewDelegate> delegate) {
    textInputViewDelegate_ = std::move(delegate);
  }
  bool canResignFirstResponder() const { return canResignFirstResponder_; }
  /// Whether the view gives up the keyboard focus when asked.
  void setCanResignFirstResponder(bool can) { canResignFirstResponder_ = can; }
  bool canKeyDownOverriding() const { return canKeyDownOverriding_; }
  /// Whether Return sends and the other keys of a conversation are looked at.
  void setCanKeyDownOverriding(bool can) { canKeyDownOverriding_ = can; }
  /// The input method is inserting conversion candidates.
  bool isConvertingMode() const { return isConvertingMode_; }
  /// Option+Return was pressed and a conversion may start.
  bool preparingConvertMode() const { return preparingConvertMode_; }

  // VeltrikTextInputView.
  std::optional<platform::NSAttributedString> attributedText() const override { return textStorage(); }
  void setAttributedText(const std::optional<platform::NSAttributedString>& text) override;
  platform::NSRange selectedRange() const override { return NSTextView::selectedRange(); }
  void setSelectedRange(platform::NSRange range) override { NSTextView::setSelectedRange(range); }
  platform::Attributes defaultAttributes() const override;
  void reset() override;
  void unmark() override;
  void setTextEditable(bool editable) override;

  // NSTextView.
  void keyDown(const platform::EventPointer& event) override;
  bool shouldChangeTextInRanges(const std::vector<platform::NSRange>& ranges,
                                const std::vector<std::u16string>& replacements) override;
  void didChangeText() override;
  bool resignFirstResponder() override;

 private:
  using Snapshot = std::optional<platform::NSAttributedString>;

  void textViewDidChangeSelection(platform::NSTextView& view) override;
  void textDidBeginEditing(platform::NSTextView& view) override;

  void handlePlainKey(const platform::EventPointer& event);
  void handleReturn();
  void handleModifiedKey(const platform::EventPointer& event, std::uint64_t modifiers);
  void replaceWholeText(const Snapshot& text);
  void reportChange();
  void registerUndo(const Snapshot& snapshot);
  void restore(const Snapshot& snapshot);
  void endMarkedText();

  std::weak_ptr<VeltrikTextInputViewDelegate> textInputViewDelegate_;
  Snapshot prevAttributedText_;
  bool backspaceEntered_ = false;
  bool backArrowEntered_ = false;
  bool canResignFirstResponder_ = false;
  bool canKeyDownOverriding_ = false;
  bool isConvertingMode_ = false;
  bool preparingConvertMode_ = false;
};

}  // namespace veltrik
