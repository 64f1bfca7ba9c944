#include <fmt/format.h>

#include "Programs/SampleHost/ConsoleTargets.h"
#include "VeltrikAppKit/Protocols/VeltrikTextInputView.h"

namespace samplehost {

namespace {

using Input = veltrik::VeltrikTextInputView;

Input& input(ConsoleContext& context) {
  const HelperPointer helper = context.host.helperOf(context.identifier);
  const auto found = helper ? helper->textInputView() : nullptr;
  if (!found) throw RequestError(fmt::format("window \"{}\" has no text input", context.identifier));
  // The window's view tree owns it.
  return *found;
}

}  // namespace

ConsoleCalls textCalls() {
  ConsoleCalls calls;
  calls.member("attributedText", input, &Input::attributedText);
  calls.member("setAttributedText", input, &Input::setAttributedText);
  calls.member("selectedRange", input, &Input::selectedRange);
  calls.member("setSelectedRange", input, &Input::setSelectedRange);
  calls.member("defaultAttributes", input, &Input::defaultAttributes);
  calls.member("reset", input, &Input::reset);
  calls.member("unmark", input, &Input::unmark);
  calls.member("setTextEditable", input, &Input::setTextEditable);
  return calls;
}

}  // namespace samplehost
