#pragma once

#include <memory>

#include "Platform/AppKit/NSScrollView.h"
#include "VeltrikAppKit/InternalTextView.h"

namespace veltrik {

enum class InputType { common, conversation };

/// A text input over a host window: a scroll view without border or background around an `InternalTextView`. Moved into
/// a window, it orders that front, makes it key and takes the keyboard focus. Made with std::make_shared. Main thread.
class TextInputNSView final : public platform::NSScrollView {
 public:
  explicit TextInputNSView(InputType inputType);

  const std::shared_ptr<InternalTextView>& textView() const { return textView_; }
  InputType inputType() const { return inputType_; }
  std::weak_ptr<VeltrikTextInputViewDelegate> delegate() const { return delegate_; }
  /// The text view reports to it from now on.
  void setDelegate(std::weak_ptr<VeltrikTextInputViewDelegate> delegate);

  void layout() override;
  void viewDidMoveToWindow() override;

 private:
  void configureScrollView();
  void configureTextView();

  std::shared_ptr<InternalTextView> textView_;
  InputType inputType_;
  std::weak_ptr<VeltrikTextInputViewDelegate> delegate_;
};

}  // namespace veltrik
