#include <limits>

#include "Tests/VeltrikAppKit/TextInputFixture.h"

namespace veltrik {
namespace {

using namespace ModifierFlag;
using Heard = std::vector<std::string>;

class TextInputKinds : public TextInputFixture, public testing::WithParamInterface<InputType> {
 protected:
  TextInputKinds() : TextInputFixture(GetParam()) {}
};
INSTANTIATE_TEST_SUITE_P(All, TextInputKinds, testing::Values(InputType::common, InputType::conversation));

TEST_P(TextInputKinds, AreMadeForOneKindOfInput) {
  constexpr double kLargest = std::numeric_limits<double>::max();
  const bool isConversation = GetParam() == InputType::conversation;
  EXPECT_EQ(input->verticalScroller()->scrollerStyle(), platform::ScrollerStyle::overlay);
  EXPECT_EQ(text().textContainer().lineBreakMode, platform::LineBreakMode::byCharWrapping);
  const platform::Attributes expected{{platform::kFontAttribute, platform::Font{.size = isConversation ? 13.0 : 14.0}}};
  EXPECT_EQ(text().defaultAttributes(), expected);
  EXPECT_EQ(text().textContainer().containerSize, (platform::Size{300, kLargest}));
  EXPECT_EQ(text().minSize(), (platform::Size{0, 60}));
  EXPECT_EQ(text().maxSize(), (platform::Size{kLargest, kLargest}));
  EXPECT_EQ(text().frame(), (platform::Rect{0, 0, 300, 60}));
}

TEST_P(TextInputKinds, KeepTheKeyboardUntilTheyMayResign) {
  EXPECT_TRUE(window->isKeyWindow());
  EXPECT_EQ(window->firstResponder(), input->textView()) << "taken with the move into the window";
  EXPECT_FALSE(window->makeFirstResponder(nullptr));
  EXPECT_EQ(window->firstResponder(), input->textView());
  text().setCanResignFirstResponder(true);
  EXPECT_TRUE(window->makeFirstResponder(nullptr));
  EXPECT_EQ(window->firstResponder(), window);
}

TEST_P(TextInputKinds, WithoutDelegateAllowEveryEdit) {
  input->setDelegate({});
  type("ab\n");
  key(KeyCode::kBackspace);
  EXPECT_EQ(string(), GetParam() == InputType::common ? u"ab" : u"a");
  EXPECT_EQ(host->take(), Heard{});
}

TEST_P(TextInputKinds, NotEditableAreHiddenAndUnchangeable) {
  type("ab");
  host->take();
  text().setTextEditable(false);
  EXPECT_TRUE(text().isHidden());
  EXPECT_FALSE(text().isEditable());
  EXPECT_FALSE(text().isSelectable());
  text().setAttributedText(platform::NSAttributedString(u"x"));
  text().reset();
  EXPECT_EQ(string(), u"ab");
  EXPECT_EQ(host->take(), Heard{});
  text().setTextEditable(true);
  EXPECT_FALSE(text().isHidden());
  text().setAttributedText(platform::NSAttributedString(u"x"));
  EXPECT_EQ(host->take(), Heard{"changed 'x'"});
}

class TextInputConversation : public TextInputFixture {};

TEST_F(TextInputConversation, KeysAndWhatTheHostHears) {
  struct Row {
    const char* name;
    std::uint16_t key;
    const char* characters;
    std::uint64_t modifiers;
    Heard heard;
    std::u16string after;
  };
  constexpr std::uint64_t kArrow = kNumericPad | kFunction;
  host->hearsSelections = true;
  for (const Row& row : std::initializer_list<Row>{
           {"a letter", 0, "a", 0, {"change? {2, 0} 'a'", "selection", "changed 'xya'"}, u"xya"},
           {"return sends", KeyCode::kReturn, "\r", 0, {"send"}, u"xy"},
           {"return with flags that don't count", KeyCode::kReturn, "\r", kCapsLock | kNumericPad, {"send"}, u"xy"},
           {"shift return",
            KeyCode::kReturn,
            "\r",
            kShift,
            {"change? {2, 0} '\n'", "selection", "changed 'xy\n'"},
            u"xy\n"},
           {"control return as shift return",
            KeyCode::kReturn,
            "\r",
            kControl | kCapsLock,
            {"change? {2, 0} '\n'", "selection", "changed 'xy\n'"},
            u"xy\n"},
           {"control shift return as it is", KeyCode::kReturn, "\r", kControl | kShift, {}, u"xy"},
           {"command return as it is", KeyCode::kReturn, "\r", kCommand, {}, u"xy"},
           {"option return as it is", KeyCode::kReturn, "\r", kOption, {}, u"xy"},
           {"backspace", KeyCode::kBackspace, "", 0, {"backspace? {1, 1} ''", "selection", "changed 'x'"}, u"x"},
           {"control backspace",
            KeyCode::kBackspace,
            "",
            kControl,
            {"backspace? {0, 2} ''", "selection", "changed ''"},
            u""},
           {"forward delete at the end", KeyCode::kForwardDelete, "", 0, {}, u"xy"},
           {"left arrow", KeyCode::kLeftArrow, "", kArrow, {"selection by left arrow"}, u"xy"},
           {"shift left arrow", KeyCode::kLeftArrow, "", kArrow | kShift, {"selection by left arrow"}, u"xy"},
           {"home", KeyCode::kHome, "", 0, {"selection"}, u"xy"},
           {"right arrow at the end", KeyCode::kRightArrow, "", kArrow, {}, u"xy"},
       }) {
    text().setAttributedText(platform::NSAttributedString(u"xy", text().defaultAttributes()));
    text().setSelectedRange({2, 0});
    host->take();
    key(row.key, row.characters, row.modifiers);
    EXPECT_EQ(host->take(), row.heard) << row.name;
    EXPECT_EQ(string(), row.after) << row.name;
  }
}

TEST_F(TextInputConversation, LeftArrowIsTheReasonForOneSelectionChangeOnly) {
  type("ab");
  host->hearsSelections = true;
  host->take();
  key(KeyCode::kLeftArrow);
  text().setSelectedRange({0, 0});
  EXPECT_EQ(host->take(), (Heard{"selection by left arrow", "selection"}));
  key(KeyCode::kLeftArrow);  // at the start: no change, the key is remembered
  text().setSelectedRange({1, 0});
  EXPECT_EQ(host->take(), Heard{"selection by left arrow"});
}

TEST_F(TextInputConversation, TheLastKeyDecidesHowAnEditIsAskedFor) {
  type("ab");
  key(KeyCode::kBackspace);
  host->take();
  text().insertText(u"한");
  EXPECT_EQ(host->take(), (Heard{"backspace? {1, 0} '한'", "changed 'a한'"}));
  type("b");
  EXPECT_EQ(host->take(), (Heard{"change? {2, 0} 'b'", "changed 'a한b'"}));
}

TEST_F(TextInputConversation, KeysTypedAheadOfASendAreDropped) {
  auto& application = platform::NSApplication::shared();
  const auto queued = [&](std::uint16_t keyCode, const char* characters, std::int64_t windowNumber) {
    auto event = *keyEvent(keyCode, characters);
    event.windowNumber = windowNumber;
    application.postEvent(std::make_shared<const platform::NSEvent>(event), false);
  };
  queued(KeyCode::kReturn, "\r", window->windowNumber());
  queued(0, "a", window->windowNumber());
  queued(KeyCode::kReturn, "\r", window->windowNumber());
  desktop.settle();
  EXPECT_EQ(host->take(), Heard{"send"});
  EXPECT_EQ(string(), u"");
}

class TextInputCommon : public TextInputFixture {
 protected:
  TextInputCommon() : TextInputFixture(InputType::common) {}
};

TEST_F(TextInputCommon, LeavesEveryKeyToTheTextView) {
  type("a\n");
  key(KeyCode::kBackspace);
  EXPECT_EQ(host->take(), (Heard{"change? {0, 0} 'a'", "changed 'a'", "change? {1, 0} '\n'", "changed 'a\n'",
                                 "change? {1, 1} ''", "changed 'a'"}));
  key(KeyCode::kReturn, "\r", kOption);
  inputMethod().compose(u"韓");
  EXPECT_FALSE(text().preparingConvertMode());
  EXPECT_FALSE(text().isConvertingMode());
  host->hearsSelections = true;
  host->take();
  text().unmark();
  key(KeyCode::kLeftArrow);
  EXPECT_EQ(host->take(), Heard{"selection"});
}

// The two states of the conversion mode: Option+Return was pressed (P), candidates are being inserted (C). What a user
// does with them most of the time is in the random walk of TextInputModelTest.
TEST_F(TextInputConversation, ConversionMode) {
  struct Event {
    const char* name;
    std::function<void()> happen;
    std::optional<bool> preparing;              // nothing: as before
    std::optional<bool> convertingIfPreparing;  // nothing: C as before; else what C becomes when P is set
  };
  const auto down = [&](std::uint16_t keyCode, std::uint64_t modifiers) {
    return [this, keyCode, modifiers] { text().keyDown(keyEvent(keyCode, "", modifiers)); };
  };
  const auto approve = [&](std::vector<std::u16string> replacements) {
    return [this, replacements] { text().shouldChangeTextInRanges({{0, 0}}, replacements); };
  };
  const Event events[] = {
      {"option control return", down(KeyCode::kReturn, kOption | kControl), true, {}},
      {"return with Caps Lock", down(KeyCode::kReturn, kCapsLock), false, {}},
      {"return with command", down(KeyCode::kReturn, kCommand), false, {}},
      {"another key with a modifier", down(KeyCode::kEscape, kControl), false, {}},
      {"option without return", down(KeyCode::kEscape, kOption), false, {}},
      {"arrow with a modifier", down(KeyCode::kUpArrow, kShift), {}, {}},
      {"another key", down(KeyCode::kEscape, 0), {}, {}},
      {"another key with Caps Lock", down(KeyCode::kEscape, kCapsLock), {}, {}},
      {"a deletion", approve({u""}), {}, true},
      {"two edits", approve({u"a", u"b"}), {}, false},
      {"no text", approve({}), {}, false},
  };
  for (const bool preparing : {false, true})
    for (const bool converting : {false, true})
      for (const Event& event : events) {
        down(KeyCode::kReturn, kOption)();
        approve({converting ? u"韓" : u"\n"})();
        if (!preparing) down(KeyCode::kEscape, kControl)();
        ASSERT_EQ(text().preparingConvertMode(), preparing);
        ASSERT_EQ(text().isConvertingMode(), converting);
        event.happen();
        const auto state = std::string(event.name) + (preparing ? " with P" : "") + (converting ? " with C" : "");
        EXPECT_EQ(text().preparingConvertMode(), event.preparing.value_or(preparing)) << state;
        const bool expected = event.convertingIfPreparing ? preparing && *event.convertingIfPreparing : converting;
        EXPECT_EQ(text().isConvertingMode(), expected) << state;
      }
}

TEST_F(TextInputConversation, ReturnInAPlainCompositionSendsOnceAndHasTheWholeText) {
  std::string sent;
  host->inside = [&](const std::string& heard) {
    if (heard != "send") return;
    sent += text().string();
    text().reset();
  };
  inputMethod().setFilter([&](const platform::port::KeyInput& key) {
    if (key.down && key.keyCode == KeyCode::kReturn) inputMethod().commit(inputMethod().preedit());
    return false;
  });
  type("a");
  inputMethod().compose(u"한");
  key(KeyCode::kReturn, "\r");
  EXPECT_EQ(sent, "a한");
  EXPECT_EQ(string(), u"");
  EXPECT_EQ(inputMethod().preedit(), u"");
}

// What a step brings back of the text is the random walk's to check, in TextInputModelTest.
class TextInputUndo : public TextInputFixture {
 protected:
  void undo() { key(KeyCode::kZ, "z", ModifierFlag::kControl); }
};

TEST_F(TextInputUndo, OfATextSetBeforeAnyEditRestoresAnEmptyText) {
  text().setAttributedText(platform::NSAttributedString(u"set"));
  undo();
  EXPECT_EQ(string(), u"");
  type("a");
  EXPECT_EQ(text().textStorage().attributesAt(0), text().defaultAttributes());
}

TEST_F(TextInputUndo, StepsDoNotAskWhetherTheTextIsEditable) {
  type("ab");
  text().setTextEditable(false);
  host->take();
  text().undoManager().undo();
  EXPECT_EQ(string(), u"a");
  EXPECT_EQ(host->take(), std::vector<std::string>{"changed 'a'"});
}

TEST_F(TextInputUndo, KeepsAttributes) {
  platform::NSAttributedString colored(u"name", text().defaultAttributes());
  colored.setAttributes({0, 2}, {{platform::kForegroundColorAttribute, platform::Color{1, 0, 0, 1}}});
  text().setAttributedText(colored);
  type("x");
  undo();
  EXPECT_EQ(text().attributedText(), colored);
}

}  // namespace
}  // namespace veltrik
