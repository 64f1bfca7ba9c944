#include <algorithm>

#include <map>

#include "Tests/VeltrikAppKit/TextInputFixture.h"

namespace veltrik {
namespace {

struct Case {
  std::string callback;
  std::string action;
};

std::vector<Case> allCases() {
  std::vector<Case> cases;
  for (const char* callback : {"send", "changed", "selection", "backspace?", "change?"})
    for (const char* action : {"drop", "reset", "set text", "close", "unmark", "not editable", "undo", "forget host"})
      cases.push_back({callback, action});
  return cases;
}

class TextInputSafety : public TextInputFixture, public testing::WithParamInterface<Case> {
 protected:
  TextInputSafety() { host->hearsSelections = true; }

  InternalTextView* view() { return input ? input->textView().get() : nullptr; }
  void act(const std::string& action) {
    if (action == "drop") {
      if (input) input->removeFromSuperview();
      input = nullptr;
    } else if (action == "close") {
      if (window) window->close();
      window = nullptr;
    } else if (action == "forget host") {
      host = nullptr;
    } else if (auto* text = view()) {
      if (action == "reset") text->reset();
      if (action == "set text") text->setAttributedText(platform::NSAttributedString(u"!"));
      if (action == "unmark") text->unmark();
      if (action == "not editable") text->setTextEditable(false);
      if (action == "undo") text->undoManager().undo();
    }
  }
};

// Whatever a host does inside a callback, and whatever came before it, what follows stands on its feet.
TEST_P(TextInputSafety, HostActsInsideTheCallback) {
  int depth = 0;
  host->inside = [&](const std::string& heard) {
    if (!heard.starts_with(GetParam().callback) || depth > 0) return;
    ++depth;
    act(GetParam().action);
    --depth;
  };
  const auto everythingThatCalls = {
      std::function<void()>([&] { type("ab한"); }),
      std::function<void()>([&] { inputMethod().compose(u"ㅎ"), inputMethod().compose(u"하"); }),
      std::function<void()>([&] { key(KeyCode::kBackspace); }),
      std::function<void()>([&] { inputMethod().commit(u"한"); }),
      std::function<void()>([&] { key(KeyCode::kLeftArrow); }),
      std::function<void()>([&] { inputMethod().compose(u"ㄱ"), key(KeyCode::kZ, "z", ModifierFlag::kControl); }),
      std::function<void()>([&] { key(KeyCode::kZ, "z", ModifierFlag::kControl); }),
      std::function<void()>([&] { key(KeyCode::kY, "y", ModifierFlag::kControl); }),
      std::function<void()>([&] { inputMethod().compose(u"ㄱ"), key(KeyCode::kReturn, "\r"); }),
      std::function<void()>([&] { inputMethod().deleteSurrounding(-1, 2); }),
      std::function<void()>([&] { key(KeyCode::kReturn, "\r", ModifierFlag::kControl); }),
      std::function<void()>([&] {
        if (auto* text = view()) text->setAttributedText(std::nullopt);
      }),
      std::function<void()>([&] {
        desktop.user().click({150, 130}, 2);
      }),
      std::function<void()>([&] { desktop.advance(2); }),
  };
  for (const auto& call : everythingThatCalls) {
    call();
    if (auto* text = view()) {
      const auto length = text->textStorage().length();
      ASSERT_LE(text->selectedRange().end(), length);
      ASSERT_LE(text->markedRange().end(), length);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, TextInputSafety, testing::ValuesIn(allCases()), [](const auto& row) {
  std::string name = row.param.callback + "_" + row.param.action;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
  return name;
});

}  // namespace
}  // namespace veltrik
