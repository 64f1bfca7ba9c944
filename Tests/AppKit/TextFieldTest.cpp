#include "Platform/AppKit/NSTextField.h"

#include "Backends/Headless/RecordingCanvas.h"
#include "Platform/AppKit/NSTextView.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

class FieldOwner final : public NSTextFieldDelegate {
 public:
  void controlTextDidChange(NSTextField& field) override { heard.push_back("'" + field.stringValue() + "'"); }
  void controlTextDidEndEditing(NSTextField&) override { heard.emplace_back("end"); }
  std::vector<std::string> heard;
};

/// A field of 60 by 18 points in a key window. A Latin letter is half as wide as the font's size, a syllable as wide.
class TextFieldTest : public AppKitTest {
 protected:
  TextFieldTest() {
    field->setFont({.size = 10});
    field->setDelegate(owner);
    window->setContentView(std::make_shared<NSView>());
    window->contentView()->addSubview(field);
    window->makeKeyAndOrderFront(nullptr);
    desktop.settle();
  }
  void focus() {
    ASSERT_TRUE(window->makeFirstResponder(field));
    owner->heard.clear();
  }
  NSTextView& editor() { return *field->currentEditor(); }
  Point onScreen(Point fromTopLeft) { return window->convertPointToScreen(field->convertTo(fromTopLeft, nullptr)); }
  /// Where the caret stands in the field.
  Rect caret() { return editor().convertTo(editor().caretRect(), field.get()); }

  std::shared_ptr<NSWindow> window = NSWindow::make({100, 100, 200, 100}, StyleMask::kTitled);
  std::shared_ptr<NSTextField> field = std::make_shared<NSTextField>(Rect{20, 40, 60, 18});
  std::shared_ptr<FieldOwner> owner = std::make_shared<FieldOwner>();
};

TEST_F(TextFieldTest, TheFocusGoesToAnEditorThatHasTheWholeTextSelected) {
  field->setStringValue("abc");
  focus();
  EXPECT_EQ(window->firstResponder().get(), field->currentEditor().get());
  EXPECT_EQ(editor().string(), "abc");
  EXPECT_EQ(editor().selectedRange(), (NSRange{0, 3}));
  window->makeFirstResponder(nullptr);
  EXPECT_FALSE(field->currentEditor());
  EXPECT_EQ(field->stringValue(), "abc");
  EXPECT_THAT(owner->heard, ElementsAre("end"));
}

TEST_F(TextFieldTest, AFieldThatCannotBeSelectedTakesNoFocus) {
  field->setSelectable(false);
  EXPECT_FALSE(window->makeFirstResponder(field));
  EXPECT_EQ(window->firstResponder().get(), window.get());
}

TEST_F(TextFieldTest, KeepsToOneLineWhateverIsPutIn) {
  focus();
  editor().insertText(u"a\nb\tc");
  EXPECT_EQ(field->stringValue(), "a b c");
  field->setStringValue("d\r\ne");
  EXPECT_EQ(field->stringValue(), "d e");
  EXPECT_EQ(editor().string(), "d e");
  EXPECT_THAT(owner->heard, ElementsAre("'a b c'"));
}

TEST_F(TextFieldTest, ReturnAndTabEndTheEditingAndKeepTheFocus) {
  for (const std::uint16_t key : {KeyCode::kReturn, KeyCode::kTab}) {
    SCOPED_TRACE(key);
    focus();
    desktop.user().type("x");
    owner->heard.clear();
    desktop.user().key(key);
    EXPECT_THAT(owner->heard, ElementsAre("end"));
    ASSERT_TRUE(field->currentEditor());
    EXPECT_EQ(editor().selectedRange(), (NSRange{0, field->stringValue().size()}));
    window->makeFirstResponder(nullptr);
  }
}

TEST_F(TextFieldTest, TextSetWhileComposingEndsTheComposition) {
  focus();
  desktop.inputMethod().compose(u"한");
  field->setStringValue("x");
  EXPECT_EQ(desktop.inputMethod().preedit(), u"");
  EXPECT_FALSE(editor().hasMarkedText());
  EXPECT_EQ(field->stringValue(), "x");
  desktop.user().key(KeyCode::kZ, "z", ModifierFlag::kControl);
  EXPECT_EQ(field->stringValue(), "x") << "there is nothing to take back";
}

TEST_F(TextFieldTest, TheCaretStaysInSightOfALongText) {
  focus();
  for (int letter = 0; letter < 40; ++letter) {
    desktop.user().type("m");
    ASSERT_GE(caret().minX(), 0) << letter;
    ASSERT_LE(caret().maxX(), 60) << letter;
  }
  desktop.user().key(KeyCode::kHome);
  EXPECT_NEAR(caret().minX(), 2, 0.01);
  desktop.user().key(KeyCode::kEnd);
  EXPECT_LE(caret().maxX(), 60);
  for (int letter = 0; letter < 38; ++letter) desktop.user().key(KeyCode::kBackspace);
  EXPECT_NEAR(caret().minX(), 12, 0.01) << "what fits is shown from its start";
}

TEST_F(TextFieldTest, TheTextStandsOnTheSameLineEditedOrNot) {
  const auto lineOf = [&](std::u16string_view text) {
    headless::RecordingCanvas canvas;
    field->display(canvas);
    const auto found = std::ranges::find(canvas.texts(), text, &headless::RecordingCanvas::Text::text);
    return found == canvas.texts().end() ? Point{-1, -1} : found->topLeft;
  };
  field->setPlaceholderString("hint");
  const Point placeholder = lineOf(u"hint");
  field->setStringValue("text");
  EXPECT_EQ(lineOf(u"text"), placeholder);
  EXPECT_EQ(lineOf(u"hint"), Point(-1, -1));
  focus();
  EXPECT_EQ(lineOf(u"text"), placeholder);
  field->setStringValue("");
  EXPECT_EQ(lineOf(u"hint"), placeholder) << "also while an empty text is edited";
}

TEST_F(TextFieldTest, APressPlacesTheCaretAboveAndBelowTheLineToo) {
  field->setStringValue("abcd");
  const double end = 2 + 4 * 5;
  for (const double y : {0.5, 9.0, 17.5}) {
    SCOPED_TRACE(y);
    desktop.advance(1);
    desktop.user().click(onScreen({2 + 5, y}));
    ASSERT_TRUE(field->currentEditor());
    EXPECT_EQ(editor().selectedRange(), (NSRange{1, 0}));
    desktop.advance(1);
    desktop.user().click(onScreen({end + 20, y}));
    EXPECT_EQ(editor().selectedRange(), (NSRange{4, 0}));
  }
  EXPECT_THAT(owner->heard, IsEmpty());
}

TEST_F(TextFieldTest, AnEditorOutlivesItsField) {
  focus();
  const auto kept = field->currentEditor();
  field->removeFromSuperview();
  field.reset();
  kept->insertText(u"x");
  kept->doCommand("insertNewline:");
  EXPECT_EQ(kept->string(), "x");
}

}  // namespace
}  // namespace platform
