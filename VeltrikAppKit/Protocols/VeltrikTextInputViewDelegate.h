#pragma once

#include <string>

#include "Platform/Foundation/Unicode.h"

namespace veltrik {

class VeltrikTextInputView;

/// What the host hears from a text input view. Held weakly; a call to a delegate that has gone is dropped, and an edit
/// is then allowed. Texts are UTF-8, ranges UTF-16 units of the whole text. Any member may change or reset the text,
/// let go of the view or close its window. Main thread.
class VeltrikTextInputViewDelegate {
 public:
  virtual ~VeltrikTextInputViewDelegate() = default;

  /// Return in a conversation, no modifier held and nothing being converted. The answer is ignored.
  virtual bool requestToSendMessage() = 0;
  /// After every change, steps back and on included; `text` is the whole text.
  virtual void didChangeIn(VeltrikTextInputView& view, const std::string& text) = 0;
  /// After every change of the selection; whether the last key was Left Arrow.
  virtual void didChangeSelectionIn(VeltrikTextInputView& view, bool moveToFrontByLeftArrow) = 0;
  /// Before an edit that Backspace causes: `range` is to be replaced by `text`. True allows it.
  virtual bool shouldHandleBackspaceIn(VeltrikTextInputView& view, platform::NSRange range,
                                       const std::string& text) = 0;
  /// Before any other edit, the input method's included. True allows it; a refused composition ends.
  virtual bool shouldChangeTextInTextView(VeltrikTextInputView& view, platform::NSRange range,
                                          const std::string& text) = 0;
};

}  // namespace veltrik
