#include "Tests/VeltrikAppKit/PluginTest.h"
#include "VeltrikAppKit/TextInputNSView.h"

namespace veltrik {
namespace {

class TextInputHostingTest : public PluginTest {
 protected:
  static std::shared_ptr<TextInputNSView> inputOf(const BoundWindow& bound) {
    const auto& views = bound.native->contentView()->subviews();
    return views.empty() ? nullptr : std::dynamic_pointer_cast<TextInputNSView>(views.back());
  }
  static Rect placed(const BoundWindow& bound) {
    bound.native->layoutIfNeeded();
    return inputOf(bound)->frame();
  }
};

// The window's content is 800 x 629 points: a bound window's content covers its frame.
TEST_F(TextInputHostingTest, TheInputIsPlacedFromTheTopLeftAndKeepsItsDistanceToTheOtherEdges) {
  const auto bound = show("main");
  bound.helper()->addConversationTextInputViewOn({20, 500, 700, 100}, {});
  EXPECT_EQ(placed(bound), Rect(20, 29, 700, 100));
  EXPECT_EQ(inputOf(bound)->inputType(), InputType::conversation);
  EXPECT_EQ(bound.helper()->textInputView().get(), inputOf(bound)->textView().get());

  bound.native->setFrame({100, 100, 1000, 829}, true);
  EXPECT_EQ(placed(bound), Rect(20, 29, 900, 100));
}

TEST_F(TextInputHostingTest, TheLeadingEdgeMovesAlone) {
  const auto bound = show("main");
  bound.helper()->addCommonTextInputViewOn({20, 500, 700, 100}, {});
  bound.helper()->setInputViewLeading(120);
  EXPECT_EQ(placed(bound), Rect(120, 29, 600, 100));
}

TEST_F(TextInputHostingTest, TheInputPlacedLastIsTheOneInHandAndTheFormerOneStays) {
  const auto bound = show("main");
  bound.helper()->addConversationTextInputViewOn({0, 0, 100, 30}, {});
  const auto former = inputOf(bound);
  bound.helper()->addCommonTextInputViewOn({0, 100, 100, 30}, {});
  EXPECT_EQ(bound.native->contentView()->subviews().size(), 2u);
  EXPECT_NE(bound.helper()->textInputView().get(), former->textView().get());
  bound.helper()->setInputViewLeading(50);
  EXPECT_EQ(placed(bound).x, 50);
  EXPECT_EQ(former->frame().x, 0);
}

TEST_F(TextInputHostingTest, TheFocusGoesToTheInputAndBackToTheHostsView) {
  const auto bound = show("main");
  bound.helper()->addConversationTextInputViewOn({0, 0, 100, 30}, {});
  const auto text = inputOf(bound)->textView();
  EXPECT_EQ(bound.native->firstResponder(), text);

  bound.helper()->makeTextViewFirstResponder(false);
  EXPECT_EQ(bound.native->firstResponder(), text);
  desktop.settle();
  EXPECT_EQ(bound.native->firstResponder(), bound.native->contentView());

  bound.helper()->makeTextViewFirstResponder(true);
  EXPECT_EQ(bound.native->firstResponder(), text);
  EXPECT_FALSE(bound.native->makeFirstResponder(bound.native->contentView()));
}

TEST_F(TextInputHostingTest, AClickInsideACommonInputGivesItTheFocusAndOneOutsideTakesItAway) {
  const auto chat = show("chat");
  chat.helper()->addConversationTextInputViewOn({100, 100, 200, 50}, {});
  desktop.user().click(chat.native->frame().origin() + Point{600, 100});
  desktop.settle();
  EXPECT_EQ(chat.native->firstResponder(), inputOf(chat)->textView()) << "a conversation's keeps it";
  chat.native->close();
  desktop.advance(5);
  const auto bound = show("main");
  bound.helper()->addCommonTextInputViewOn({100, 100, 200, 50}, {});
  const auto text = inputOf(bound)->textView();
  bound.native->layoutIfNeeded();
  const Point origin = bound.native->frame().origin();
  desktop.user().click(origin + Point{600, 100});
  desktop.settle();
  EXPECT_EQ(bound.native->firstResponder(), bound.native->contentView());
  desktop.advance(5);
  desktop.user().click(origin + inputOf(bound)->frame().center());
  desktop.settle();
  EXPECT_EQ(bound.native->firstResponder(), text);
}

}  // namespace
}  // namespace veltrik
