#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/NSTextView.h"
#include "Programs/SampleHost/Tour.h"
#include "VeltrikAppKit/Protocols/VeltrikTextInputView.h"

namespace samplehost {

namespace KeyCode = platform::KeyCode;
namespace ModifierFlag = platform::ModifierFlag;

void Tour::typeAndSend() {
  transcript_.expectTrue("the composer has the focus",
                         std::dynamic_pointer_cast<platform::NSTextView>(mainWindow()->firstResponder()) != nullptr);
  user_->type("The plug-in says hello.");
  transcript_.expect("the text stands in the composer", "The plug-in says hello.", chat_->draft());
  picture("typed", mainWindow());
  user_->key(KeyCode::kReturn, 0);
  transcript_.expect("Return sent the whole text", "The plug-in says hello.", lastMessage());
  transcript_.expect("the composer is empty", "", chat_->draft());
}

void Tour::composeHangul() {
  const auto before = chat_->chat().messages().size();
  user_->commit(u"안녕하세");
  user_->compose(u"요");
  const auto text = std::dynamic_pointer_cast<platform::NSTextView>(mainWindow()->firstResponder());
  transcript_.expect("the syllable in composition stands at the caret", "안녕하세요", chat_->draft());
  transcript_.expectTrue("it is marked", text && text->hasMarkedText());
  picture("composing", mainWindow());
  user_->key(KeyCode::kReturn, 0);
  transcript_.expect("Return sent it whole", "안녕하세요", lastMessage());
  transcript_.expect("and once", static_cast<std::int64_t>(before + 1),
                     static_cast<std::int64_t>(chat_->chat().messages().size()));
  transcript_.expect("the composer is empty", "", chat_->draft());
}

void Tour::newLine() {
  user_->type("one");
  user_->key(KeyCode::kReturn, ModifierFlag::kControl);
  user_->type("two");
  transcript_.expect("two lines in the composer", "one\ntwo", chat_->draft());
  user_->key(KeyCode::kReturn, 0);
  transcript_.expect("sent as one message", "one\ntwo", lastMessage());
  picture("sent", mainWindow());
}

void Tour::undoAndRedo() {
  user_->type("ab");
  user_->key(KeyCode::kZ, ModifierFlag::kControl);
  transcript_.expect("a step back", "a", chat_->draft());
  user_->key(KeyCode::kZ, ModifierFlag::kControl | ModifierFlag::kShift);
  transcript_.expect("and on", "ab", chat_->draft());
  const auto input = main().textInputView();
  if (!input) return transcript_.failed("the helper hands the input out", "there is none");
  input->reset();
  transcript_.expect("reset empties it", "", chat_->draft());
  user_->key(KeyCode::kZ, ModifierFlag::kControl);
  transcript_.expect("after a reset there is nothing to undo", "", chat_->draft());
}

}  // namespace samplehost
