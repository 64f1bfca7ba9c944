#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSImageView.h"
#include "Platform/AppKit/NSTextField.h"

namespace veltrik {

/// A compact, rounded search box: magnifier, text, and a button that clears the text. Whoever makes it sets the
/// callbacks right after, gives it its frame (26 points high fits it) and puts it into a view tree. Up and Down Arrow
/// and Escape reach it through the principal object's keyboard monitor. Main thread.
class SearchField final : public platform::NSView, private platform::NSTextFieldDelegate {
 public:
  /// The inner text field's, by which the keyboard monitor knows it.
  static constexpr int kTextFieldTag = 100;

  using TextCallback = std::function<void(const std::string& text)>;

  /// Without a frame and without callbacks.
  static std::shared_ptr<SearchField> make();

  /// The text was clicked into; gets the current text.
  const TextCallback& focused() const { return focused_; }
  void setFocused(TextCallback callback) { focused_ = std::move(callback); }
  /// Up or Down Arrow was pressed in the field; true for Down.
  const std::function<void(bool down)>& arrowKeyDidDown() const { return arrowKeyDidDown_; }
  void setArrowKeyDidDown(std::function<void(bool down)> callback) { arrowKeyDidDown_ = std::move(callback); }
  const std::function<void()>& didEndEditing() const { return didEndEditing_; }
  void setDidEndEditing(std::function<void()> callback) { didEndEditing_ = std::move(callback); }
  /// The user, the input method or the cancel button changed the text; gets the new one.
  const TextCallback& textChanged() const { return textChanged_; }
  void setTextChanged(TextCallback callback) { textChanged_ = std::move(callback); }

  const platform::NSImageView& searchIconImageView() const { return *searchIconImageView_; }
  platform::NSTextField& textField();
  platform::NSButton& cancelButton() { return *cancelButton_; }

  /// Carries out "searchFieldCancelAction:": the text is cleared. The button stays until the text changes again.
  bool doCommand(std::string_view selector) override;

 private:
  class TextField;

  SearchField();
  void configure();
  void styleTextField();
  void styleCancelButton();
  void placeSubviews();
  void clear();
  void controlTextDidChange(platform::NSTextField& field) override;
  void controlTextDidEndEditing(platform::NSTextField& field) override;

  std::shared_ptr<platform::NSImageView> searchIconImageView_;
  std::shared_ptr<TextField> textField_;
  std::shared_ptr<platform::NSButton> cancelButton_;
  TextCallback focused_;
  std::function<void(bool)> arrowKeyDidDown_;
  std::function<void()> didEndEditing_;
  TextCallback textChanged_;
};

}  // namespace veltrik
