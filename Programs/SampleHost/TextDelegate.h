#pragma once

#include <functional>
#include <string>

#include "Programs/SampleHost/Answers.h"
#include "Programs/SampleHost/HostEvent.h"
#include "VeltrikAppKit/Protocols/VeltrikTextInputViewDelegate.h"

namespace samplehost {

/// A text input's delegate: tells what it hears, answers from the table. The text view isn't among the told arguments;
/// `from` names it. Main thread.
class TextDelegate : public veltrik::VeltrikTextInputViewDelegate {
 public:
  /// Both references are borrowed and outlive the delegate.
  TextDelegate(const std::string& identifier, const Answers& answers, const HostEvents& events)
      : name_("text:" + identifier), answers_(answers), events_(events) {}

  /// Run after the callback of that name was told.
  void setSend(std::function<void()> send) { send_ = std::move(send); }
  void setChanged(std::function<void(const std::string& text)> changed) { changed_ = std::move(changed); }

  bool requestToSendMessage() override;
  void didChangeIn(veltrik::VeltrikTextInputView& view, const std::string& text) override;
  void didChangeSelectionIn(veltrik::VeltrikTextInputView& view, bool moveToFrontByLeftArrow) override;
  bool shouldHandleBackspaceIn(veltrik::VeltrikTextInputView& view, platform::NSRange range,
                               const std::string& text) override;
  bool shouldChangeTextInTextView(veltrik::VeltrikTextInputView& view, platform::NSRange range,
                                  const std::string& text) override;

 private:
  void tell(const char* name, Value::Array arguments = {}) const;

  std::string name_;
  const Answers& answers_;
  const HostEvents& events_;
  std::function<void()> send_;
  std::function<void(const std::string&)> changed_;
};

}  // namespace samplehost
