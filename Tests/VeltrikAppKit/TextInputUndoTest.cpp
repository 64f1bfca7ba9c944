#include "Tests/VeltrikAppKit/TextInputFixture.h"

namespace veltrik {
namespace {

using platform::NSAttributedString;

// What a step brings back of the text is the random walk's to check, in TextInputModelTest.
class TextInputUndo : public TextInputFixture {
 protected:
  void undo() { key(KeyCode::kZ, "z", ModifierFlag::kControl); }
};

TEST_F(TextInputUndo, OfATextSetBeforeAnyEditRestoresAnEmptyText) {
  text().setAttributedText(NSAttributedString(u"set"));
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
  NSAttributedString colored(u"name", text().defaultAttributes());
  colored.setAttributes({0, 2}, {{platform::kForegroundColorAttribute, platform::Color{1, 0, 0, 1}}});
  text().setAttributedText(colored);
  type("x");
  undo();
  EXPECT_EQ(text().attributedText(), colored);
}

}  // namespace
}  // namespace veltrik
