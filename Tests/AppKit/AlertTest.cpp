#include "Platform/AppKit/NSAlert.h"

#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSTextField.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

constexpr std::uint16_t kReturn = 36, kTab = 48, kSpace = 49, kEscape = 53, kEnter = 76, kLeft = 123, kRight = 124;

class AlertTest : public AppKitTest {
 public:
  std::shared_ptr<NSAlert> alert = NSAlert::make();

  void write(const std::string& message, const std::string& informative, const std::vector<std::string>& buttons) {
    alert->setMessageText(message);
    alert->setInformativeText(informative);
    for (const auto& button : buttons) alert->addButton(button);
  }
  Point middleOf(std::size_t button) {
    const NSButton& view = *alert->buttons()[button];
    return alert->window()->convertPointToScreen(view.convertTo(view.bounds().center(), nullptr));
  }
  std::vector<NSTextField*> texts() {
    std::vector<NSTextField*> found;
    for (const auto& view : alert->window()->contentView()->subviews())
      if (auto* text = dynamic_cast<NSTextField*>(view.get()); text && !text->stringValue().empty())
        found.push_back(text);
    return found;
  }
};

TEST_F(AlertTest, AnswersWithTheButtonThatWasPressed) {
  using User = headless::HeadlessUser;
  struct Row {
    const char* name;
    std::vector<std::string> buttons;
    std::function<void(AlertTest&, User&)> act;
    int response;
  };
  const auto keys = [](std::vector<std::uint16_t> codes, std::uint64_t modifiers = 0) {
    return [codes, modifiers](AlertTest&, User& user) {
      for (const auto code : codes) user.key(code, "", modifiers);
    };
  };
  const std::vector<std::string> one = {"OK"}, two = {"확인", "취소"}, three = {"Yes", "No", "Later"};
  const Row rows[] = {
      {"Return", two, keys({kReturn}), 1000},
      {"Enter", two, keys({kEnter}), 1000},
      {"Space", two, keys({kSpace}), 1000},
      {"Escape", two, keys({kEscape}), 1001},
      {"Tab and Return", two, keys({kTab, kReturn}), 1001},
      {"twice Tab is once around", two, keys({kTab, kTab, kSpace}), 1000},
      {"Shift and Tab goes back", three,
       [](AlertTest&, User& user) {
         user.key(kTab, "", ModifierFlag::kShift);
         user.key(kSpace);
       },
       1002},
      {"the arrow to the left", two, keys({kLeft, kReturn}), 1001},
      {"arrows there and back", two, keys({kLeft, kRight, kReturn}), 1000},
      {"a click on the second", two, [](AlertTest& t, User& user) { user.click(t.middleOf(1)); }, 1001},
      {"a click on the third", three, [](AlertTest& t, User& user) { user.click(t.middleOf(2)); }, 1002},
      {"Escape means nothing to a single button", one, keys({kEscape, kReturn}), 1000},
      {"a shortcut is no answer", two,
       [](AlertTest&, User& user) {
         user.key(kReturn, "", ModifierFlag::kCommand);
         user.key(kEscape);
       },
       1001},
      {"a key that is held is no answer", two,
       [](AlertTest&, User& user) {
         user.keyDown(kReturn, "", 0, true);
         user.key(kEscape);
       },
       1001},
      {"it is closed", two, [](AlertTest& t, User&) { t.alert->window()->close(); }, ModalResponse::kAbort},
  };
  const auto parent = showWindow();
  for (const Row& row : rows) {
    for (const bool isSheet : {false, true}) {
      SCOPED_TRACE(testing::Message() << row.name << (isSheet ? ", a sheet" : ", modal"));
      alert = NSAlert::make();
      write("Message", "", row.buttons);
      std::vector<int> responses;
      if (isSheet) {
        alert->beginSheetModal(parent, [&](int response) { responses.push_back(response); });
        desktop.advance(1);
        row.act(*this, user());
      } else {
        later([&] { user().together([&] { row.act(*this, user()); }); });
        responses.push_back(alert->runModal());
      }
      desktop.settle();
      EXPECT_THAT(responses, ElementsAre(row.response));
      EXPECT_THAT(application().windows(), ElementsAre(parent)) << "nothing of it stays behind";
      EXPECT_TRUE(parent->isKeyWindow());
    }
  }
}

std::string repeated(const std::string& part, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += part;
  return text;
}

TEST_F(AlertTest, TextsAndButtonsHaveTheirRoomOnEveryScreen) {
  struct Row {
    const char* name;
    std::string message, informative;
    std::vector<std::string> buttons;
    bool scrolls = false;
  };
  const std::string korean = "메시지를 삭제하시겠습니까? 삭제한 메시지는 되돌릴 수 없습니다. ";
  const Row rows[] = {
      {"one line each", "Delete?", "It can't be undone.", {"Delete", "Cancel"}},
      {"Korean that wraps", korean, repeated(korean, 4), {"삭제", "취소"}},
      {"lines of its own", "A\nB", "1\r\n2\n3\n\n5", {"OK"}},
      {"only the message", repeated("many words ", 20), "", {"OK", "Cancel"}},
      {"only the explanation", "", repeated("many words ", 20), {"OK", "Cancel"}},
      {"no text", "", "", {"", ""}},
      {"one long word", "", repeated("가", 500), {"OK"}},
      {"buttons too wide for a row", "Which?", "Choose.", {repeated("long ", 12), repeated("wide ", 12), "Cancel"}},
      {"a button wider than the alert", "Which?", "", {repeated("long ", 100), "Cancel"}},
      {"100,000 characters", repeated("x", 100'000), repeated("한글 ", 50'000), {"OK", "Cancel"}, true},
      {"100,000 lines", "lines", repeated("\n", 100'000), {"OK", "Cancel"}, true},
      {"bytes that are no text", "\xff\xfe\x80 file://\x01", std::string("a\0b", 3), {"\xff", "Cancel"}},
  };
  const port::ScreenInfo screens[] = {{{0, 0, 1440, 900}, {0, 0, 1440, 876}, 1},
                                      {{0, 0, 640, 400}, {0, 0, 640, 380}, 1}};
  for (const auto& screen : screens) {
    desktop.setScreens({screen});
    desktop.settle();
    for (const Row& row : rows) {
      SCOPED_TRACE(testing::Message() << row.name << " on " << screen.frame.height);
      alert = NSAlert::make();
      write(row.message, row.informative, row.buttons);
      later([&] {
        const auto window = alert->window();
        const Rect frame = window->frame();
        EXPECT_EQ(frame.intersection(screen.visibleFrame), frame);
        const Rect content{{}, window->contentView()->frame().size()};
        std::vector<Rect> taken;
        for (const auto& view : window->contentView()->subviews()) {
          const Rect place = view->frame();
          if (place.isEmpty()) continue;
          EXPECT_EQ(place.intersection(content), place);
          for (const Rect& other : taken) EXPECT_TRUE(place.intersection(other).isEmpty());
          taken.push_back(place);
        }
        for (const auto* text : texts()) EXPECT_GE(text->frame().height, 16);
        alert->window()->close();
      });
      alert->runModal();
    }
  }
}

TEST_F(AlertTest, ALongTextScrollsByWheelAndKeys) {
  write("Message", repeated("line\n", 500), {"OK", "Cancel"});
  const auto firstLine = [&] {
    for (const auto& each : surfaceOf(*alert->window()).repaint().texts())
      if (each.text.starts_with(u"line")) return each.topLeft.y;
    return 1e9;
  };
  later([&] {
    const double before = firstLine();
    const NSTextField& text = *texts().back();
    user().together([&] {
      user().wheel(alert->window()->convertPointToScreen(text.convertTo(text.bounds().center(), nullptr)), 0, -50);
      user().then([&] { EXPECT_LT(firstLine(), before); });
      user().key(116);  // Page Up
      user().then([&] { EXPECT_EQ(firstLine(), before); });
      user().key(kReturn);
    });
  });
  EXPECT_EQ(alert->runModal(), AlertResponse::kFirstButton);
}

TEST_F(AlertTest, CanBeShownAgainAndInsideAnother) {
  write("Outer", "", {"OK", "Cancel"});
  for (int round = 0; round < 3; ++round) {
    const auto inner = NSAlert::make();
    inner->setMessageText("Inner");
    inner->addButton("OK");
    int innerResponse = 0;
    later([&] {
      EXPECT_EQ(alert->runModal(), ModalResponse::kAbort) << "it is shown already";
      later([&] { user().key(kReturn); });
      innerResponse = inner->runModal();
      EXPECT_EQ(application().modalWindow(), alert->window());
      user().together([&] { user().key(kEscape); });
    });
    EXPECT_EQ(alert->runModal(), AlertResponse::kSecondButton);
    EXPECT_EQ(innerResponse, AlertResponse::kFirstButton);
    desktop.settle();
    EXPECT_THAT(application().windows(), IsEmpty());
  }
}

}  // namespace
}  // namespace platform
