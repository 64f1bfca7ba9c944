#include "Tests/VeltrikAppKit/PluginTest.h"

namespace veltrik {
namespace {

class WindowPropertiesTest : public PluginTest {};

TEST_F(WindowPropertiesTest, OnlyTheFloatingLevelIsAlwaysOnTop) {
  const auto bound = show("main");
  for (const int level : {-1, 0, 2, 3, 4, 8}) {
    bound.native->setLevel(level);
    EXPECT_EQ(bound.helper()->alwaysOnTop(), level == 3) << level;
  }
  bound.helper()->setAlwaysOnTop(false);
  EXPECT_EQ(bound.native->level(), 0);
}

TEST_F(WindowPropertiesTest, CapsLockIsThatOfTheCurrentEvent) {
  const auto bound = show("main");
  desktop.user().key(platform::KeyCode::kA, "a", platform::ModifierFlag::kShift);
  EXPECT_FALSE(bound.helper()->isCapsLockKeyDown());
  desktop.user().key(platform::KeyCode::kA, "A", platform::ModifierFlag::kCapsLock);
  EXPECT_TRUE(bound.helper()->isCapsLockKeyDown());
}

TEST_F(WindowPropertiesTest, WithoutItsWindowEveryQueryAnswersItsDefaultAndEveryOperationDoesNothing) {
  const auto bound = show("main");
  const auto number = bound.native->windowNumber();
  const auto& helper = bound.helper();
  bound.native->close();
  desktop.settle();
  log.clear();

  helper->setAlpha(1);
  helper->setAlwaysOnTop(true);
  helper->setIsWindowHidden(false);
  helper->setIsWindowRestorable(true);
  helper->makeMainAndKeyNSWindow();
  helper->becomeFirstWindow();
  helper->orderFrontNSWindow();
  helper->orderFrontBehideCurrentWindows();
  helper->minimize();
  helper->maximize();
  helper->closeWindow();
  helper->closePopoverWindow();
  helper->closeSheetWindow();
  helper->closeChildAlert();
  helper->setTitleBarTransparentAndTitleHidden();
  helper->addMovableBounds({0, 0, 10, 10});
  helper->resetAllMovableBounds();
  helper->setContentSize({0, 0, 10, 10});
  helper->setCloseButtonHidden(true);
  helper->addConversationTextInputViewOn({0, 0, 10, 10}, {});
  helper->addCommonTextInputViewOn({0, 0, 10, 10}, {});
  helper->makeTextViewFirstResponder(true);
  helper->makeTextViewFirstResponder(false);
  helper->setInputViewLeading(3);
  desktop.settle();

  EXPECT_EQ(helper->alpha(), 0.0);
  EXPECT_FALSE(helper->alwaysOnTop());
  EXPECT_TRUE(helper->isWindowHidden());
  EXPECT_FALSE(helper->isWindowRestorable());
  EXPECT_EQ(helper->nsWindowFrame(), Rect());
  EXPECT_EQ(helper->nsWindowNumber(), number);
  EXPECT_EQ(helper->titleBarHeight(), 29.0);
  EXPECT_FALSE(helper->hasChildWindow());
  EXPECT_FALSE(helper->isPopoverWindow());
  EXPECT_FALSE(helper->isSheetWindow());
  EXPECT_FALSE(helper->isMainNSWindow());
  EXPECT_FALSE(helper->isKeyNSWindow());
  EXPECT_FALSE(helper->isForcedClose());
  EXPECT_EQ(helper->textInputView(), nullptr);
  EXPECT_FALSE(bound.native->isVisible());
  EXPECT_TRUE(NSApplication::shared().windows().empty());
  EXPECT_EQ(bound.native->level(), 0);
  EXPECT_TRUE(bound.native->contentView()->subviews().empty());
}

}  // namespace
}  // namespace veltrik
