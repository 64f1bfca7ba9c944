#include "Programs/SampleHost/TextDelegate.h"

#include <utility>

namespace samplehost {

using platform::NSRange;
using veltrik::VeltrikTextInputView;

void TextDelegate::tell(const char* name, Value::Array arguments) const {
  events_.emit({name, name_, std::move(arguments)});
}

bool TextDelegate::requestToSendMessage() {
  tell("requestToSendMessage");
  const bool answer = answers_.get<bool>(name_, "requestToSendMessage");
  if (send_) send_();
  return answer;
}

void TextDelegate::didChangeIn(VeltrikTextInputView& /*view*/, const std::string& text) {
  tell("didChangeIn", {text});
  if (changed_) changed_(text);
}

void TextDelegate::didChangeSelectionIn(VeltrikTextInputView& /*view*/, bool moveToFrontByLeftArrow) {
  tell("didChangeSelectionIn", {moveToFrontByLeftArrow});
}

bool TextDelegate::shouldHandleBackspaceIn(VeltrikTextInputView& /*view*/, NSRange range, const std::string& text) {
  tell("shouldHandleBackspaceIn", {Codec<NSRange>::encode(range), text});
  return answers_.get<bool>(name_, "shouldHandleBackspaceIn");
}

bool TextDelegate::shouldChangeTextInTextView(VeltrikTextInputView& /*view*/, NSRange range, const std::string& text) {
  tell("shouldChangeTextInTextView", {Codec<NSRange>::encode(range), text});
  return answers_.get<bool>(name_, "shouldChangeTextInTextView");
}

}  // namespace samplehost
