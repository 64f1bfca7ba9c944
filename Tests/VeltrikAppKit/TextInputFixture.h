#pragma once

#include <utility>

#include "Tests/AppKit/TextFixture.h"
#include "VeltrikAppKit/TextInputNSView.h"

namespace veltrik {

using platform::keyEvent;
using platform::NSRange;
namespace KeyCode = platform::KeyCode;
namespace ModifierFlag = platform::ModifierFlag;

/// A host that writes down what it hears and answers as told.
class TextInputHost : public VeltrikTextInputViewDelegate {
 public:
  bool requestToSendMessage() override {
    hear("send");
    return true;
  }
  void didChangeIn(VeltrikTextInputView&, const std::string& text) override { hear("changed '" + text + "'"); }
  void didChangeSelectionIn(VeltrikTextInputView&, bool byLeftArrow) override {
    if (hearsSelections) hear(byLeftArrow ? "selection by left arrow" : "selection");
  }
  bool shouldHandleBackspaceIn(VeltrikTextInputView&, NSRange range, const std::string& text) override {
    return asked("backspace", range, text);
  }
  bool shouldChangeTextInTextView(VeltrikTextInputView&, NSRange range, const std::string& text) override {
    return asked("change", range, text);
  }

  /// What was heard since the last call.
  std::vector<std::string> take() { return std::exchange(heard_, {}); }

  bool allows = true;
  bool hearsSelections = false;
  /// Runs inside every call, after it was written down.
  std::function<void(const std::string& heard)> inside;

 private:
  bool asked(const std::string& what, NSRange range, const std::string& text) {
    const bool answer = allows;
    hear(what + "? {" + std::to_string(range.location) + ", " + std::to_string(range.length) + "} '" + text + "'");
    return answer;
  }
  void hear(const std::string& what) {
    heard_.push_back(what);
    if (inside) inside(what);
  }
  std::vector<std::string> heard_;
};

/// An input in a key window of 300 by 60 points, with the focus.
class TextInputFixture : public platform::AppKitTest {
 protected:
  explicit TextInputFixture(InputType type = InputType::conversation)
      : window(platform::NSWindow::make({100, 100, 300, 60}, platform::StyleMask::kTitled)),
        input(std::make_shared<TextInputNSView>(type)),
        host(std::make_shared<TextInputHost>()) {
    window->setContentView(std::make_shared<platform::NSView>());
    input->setDelegate(host);
    input->setFrame({0, 0, 300, 60});
    window->contentView()->addSubview(input);
    desktop.settle();
  }

  InternalTextView& text() { return *input->textView(); }
  std::u16string string() { return text().textStorage().string(); }
  void key(std::uint16_t keyCode, const std::string& characters = {}, std::uint64_t modifiers = 0) {
    desktop.user().key(keyCode, characters, modifiers);
  }
  void type(const std::string& characters) { desktop.user().type(characters); }
  headless::HeadlessInputMethod& inputMethod() { return desktop.inputMethod(); }

  std::shared_ptr<platform::NSWindow> window;
  std::shared_ptr<TextInputNSView> input;
  std::shared_ptr<TextInputHost> host;
};

}  // namespace veltrik
