#include <stdexcept>
#include <tuple>

#include "Platform/AppKit/ScopedDepth.h"
#include "Tests/VeltrikAppKit/TextInputFixture.h"

namespace veltrik {
namespace {

using Case = std::tuple<std::string, std::string>;  ///< the callback, and what the host does in it

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
    } else if (action == "open a window") {
      platform::NSWindow::make({500, 100, 100, 100}, platform::StyleMask::kTitled)->makeKeyAndOrderFront(nullptr);
    } else if (action == "throw") {
      throw std::runtime_error("host");
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
  const auto& [callback, action] = GetParam();
  int depth = 0;
  host->inside = [&, callback = callback, action = action](const std::string& heard) {
    if (!heard.starts_with(callback) || depth > 0) return;
    const platform::ScopedDepth inside(depth);
    act(action);
  };
  int thrown = 0;
  const std::function<void()> everythingThatCalls[] = {
      [&] { type("ab한"); },
      [&] { inputMethod().compose(u"ㅎ"), inputMethod().compose(u"하"); },
      [&] { key(KeyCode::kBackspace); },
      [&] { inputMethod().commit(u"한"); },
      [&] { key(KeyCode::kLeftArrow); },
      [&] { inputMethod().compose(u"ㄱ"), key(KeyCode::kZ, "z", ModifierFlag::kControl); },
      [&] { key(KeyCode::kZ, "z", ModifierFlag::kControl); },
      [&] { key(KeyCode::kY, "y", ModifierFlag::kControl); },
      [&] { inputMethod().compose(u"ㄱ"), key(KeyCode::kReturn, "\r"); },
      [&] { inputMethod().deleteSurrounding(-1, 2); },
      [&] { key(KeyCode::kReturn, "\r", ModifierFlag::kControl); },
      [&] {
        if (auto* text = view()) text->setAttributedText(std::nullopt);
      },
      [&] {
        desktop.user().click({150, 130}, 2);
      },
      [&] { desktop.advance(2); },
  };
  for (const auto& call : everythingThatCalls) {
    try {
      call();
    } catch (const std::runtime_error&) {
      ++thrown;
    }
    if (auto* text = view()) {
      const auto length = text->textStorage().length();
      ASSERT_LE(text->selectedRange().end(), length);
      ASSERT_LE(text->markedRange().end(), length);
    }
  }
  EXPECT_EQ(thrown > 0, action == "throw");
  if (action != "throw") return;
  host->inside = nullptr;
  type("z");
  EXPECT_THAT(platform::utf8(string()), testing::HasSubstr("z"));
}

INSTANTIATE_TEST_SUITE_P(All, TextInputSafety,
                         testing::Combine(testing::Values("send", "changed", "selection", "backspace?", "change?"),
                                          testing::Values("drop", "reset", "set text", "close", "unmark",
                                                          "not editable", "undo", "forget host", "open a window",
                                                          "throw")),
                         [](const auto& row) {
                           std::string name = std::get<0>(row.param) + "_" + std::get<1>(row.param);
                           std::erase_if(name, [](char c) { return c == ' ' || c == '?'; });
                           return name;
                         });

}  // namespace
}  // namespace veltrik
