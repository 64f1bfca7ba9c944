#include "Tests/VeltrikAppKit/TextInputFixture.h"

namespace veltrik {
namespace {

using platform::NSAttributedString;
using Heard = std::vector<std::string>;

class TextInputUndo : public TextInputFixture {
 protected:
  void undo() { key(KeyCode::kZ, "z", ModifierFlag::kControl); }
  void redo() { key(KeyCode::kZ, "Z", ModifierFlag::kControl | ModifierFlag::kShift); }
};

TEST_F(TextInputUndo, GoesThroughEveryEditAndBackAndIsReported) {
  type("ab");
  host->take();
  undo();
  undo();
  redo();
  redo();
  EXPECT_EQ(host->take(), (Heard{"changed 'a'", "changed ''", "changed 'a'", "changed 'ab'"}));
  EXPECT_EQ(text().selectedRange(), (NSRange{2, 0}));
}

TEST_F(TextInputUndo, AnEditAfterAStepBackForgetsTheStepsOn) {
  type("ab");
  undo();
  type("c");
  redo();
  EXPECT_EQ(string(), u"ac");
}

TEST_F(TextInputUndo, AfterATextWasSetRestoresWhatStoodBeforeTheLastEdit) {
  type("ab");
  text().setAttributedText(NSAttributedString(u"set", text().defaultAttributes()));
  undo();
  EXPECT_EQ(string(), u"a") << "not the text that was replaced";
  redo();
  EXPECT_EQ(string(), u"set");
}

TEST_F(TextInputUndo, OfATextSetBeforeAnyEditRestoresAnEmptyText) {
  text().setAttributedText(NSAttributedString(u"set"));
  undo();
  EXPECT_EQ(string(), u"");
  type("a");
  EXPECT_EQ(text().textStorage().attributesAt(0), text().defaultAttributes());
}

TEST_F(TextInputUndo, HasNothingAfterASendOrAReset) {
  type("ab\n");
  EXPECT_FALSE(text().undoManager().canUndo());
  type("c");
  undo();
  text().reset();
  EXPECT_FALSE(text().undoManager().canUndo());
  EXPECT_FALSE(text().undoManager().canRedo());
  undo();
  redo();
  EXPECT_EQ(string(), u"");
}

TEST_F(TextInputUndo, StepsDoNotAskWhetherTheTextIsEditable) {
  type("ab");
  text().setTextEditable(false);
  host->take();
  text().undoManager().undo();
  EXPECT_EQ(string(), u"a");
  EXPECT_EQ(host->take(), Heard{"changed 'a'"});
}

TEST_F(TextInputUndo, KeepsAttributes) {
  NSAttributedString colored(u"name", text().defaultAttributes());
  colored.setAttributes({0, 2}, {{platform::kForegroundColorAttribute, platform::Color{1, 0, 0, 1}}});
  text().setAttributedText(colored);
  type("x");
  undo();
  EXPECT_EQ(text().attributedText(), colored);
}

TEST_F(TextInputUndo, InACompositionLeavesTheTextBeforeIt) {
  type("a");
  for (const std::u16string syllable : {u"ㅎ", u"하", u"한"}) inputMethod().compose(syllable);
  undo();
  EXPECT_EQ(string(), u"a");
  EXPECT_EQ(inputMethod().preedit(), u"");
  undo();
  EXPECT_EQ(string(), u"");
}

TEST_F(TextInputUndo, InACompositionThatOutlivedASendLeavesNoHalfSyllable) {
  inputMethod().compose(u"ㅎ");
  key(KeyCode::kReturn, "\r");
  inputMethod().compose(u"하");
  undo();
  EXPECT_EQ(string(), u"");
  EXPECT_EQ(inputMethod().preedit(), u"");
}

}  // namespace
}  // namespace veltrik
