#include "Platform/AppKit/NSPanel.h"
#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

/// A window with a view, and a panel to be modal. What happens during the session is queued before it.
class ModalSessionTest : public AppKitTest {
 public:
  std::shared_ptr<RecordingView> view = std::make_shared<RecordingView>();
  std::shared_ptr<NSWindow> window = showWindow();
  std::shared_ptr<NSPanel> panel = NSPanel::make({0, 0, 200, 100}, kDocument);

  ModalSessionTest() {
    view->focusable = true;
    window->setContentView(view);
    window->makeFirstResponder(view);
    panel->setContentView(std::make_shared<NSView>());
  }
};

TEST_F(ModalSessionTest, endsWithWhatEndsIt) {
  struct Row {
    const char* name;
    std::function<void(ModalSessionTest&)> end;
    int response;
  };
  const Row rows[] = {
      {"an answer", [](ModalSessionTest& t) { t.application().stopModal(1001); }, 1001},
      {"the first of two answers",
       [](ModalSessionTest& t) {
         t.application().stopModal(1);
         t.application().stopModal(2);
       },
       1},
      {"abort", [](ModalSessionTest& t) { t.application().abortModal(); }, ModalResponse::kAbort},
      {"the window closes", [](ModalSessionTest& t) { t.panel->close(); }, ModalResponse::kAbort},
      {"the user closes it", [](ModalSessionTest& t) { t.desktop.windows().userCloses(t.surfaceOf(*t.panel)); },
       ModalResponse::kAbort},
      {"the window hides", [](ModalSessionTest& t) { t.panel->orderOut(); }, ModalResponse::kAbort},
      {"the application stops", [](ModalSessionTest& t) { t.application().stop(); }, ModalResponse::kAbort},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    panel = NSPanel::make({0, 0, 200, 100}, kDocument);
    later([&] { row.end(*this); });
    EXPECT_EQ(application().runModal(panel), row.response);
    EXPECT_EQ(application().modalWindow(), nullptr);
    panel->close();
    EXPECT_TRUE(window->isKeyWindow());
    EXPECT_FALSE(window->isInputBlocked());
  }
}

TEST_F(ModalSessionTest, refusesWhatCannotBe) {
  EXPECT_EQ(application().runModal(nullptr), ModalResponse::kAbort);
  panel->close();
  EXPECT_EQ(application().runModal(panel), ModalResponse::kAbort);
  const auto sheet = makeWindow();
  window->beginSheet(sheet, {});
  EXPECT_EQ(application().runModal(sheet), ModalResponse::kAbort);
}

TEST_F(ModalSessionTest, blocksOtherWindowsInput) {
  later([&] {
    EXPECT_EQ(application().modalWindow(), panel);
    EXPECT_TRUE(panel->isKeyWindow());
    EXPECT_TRUE(window->isMainWindow());
    EXPECT_TRUE(surfaceOf(*panel).state().modal);
    EXPECT_EQ(surfaceOf(*panel).parent(), &surfaceOf(*window)) << "it stays before the window it asks for";
    user().click({150, 120});
    user().wheel({150, 120}, 0, 10);
    user().key(KeyCode::kA, "a");
    EXPECT_THAT(view->heard, IsEmpty());
    EXPECT_TRUE(panel->isKeyWindow());
    user().click({114, 414.5});
    EXPECT_FALSE(window->isClosed());
    window->makeKeyAndOrderFront(nullptr);
    EXPECT_TRUE(panel->isKeyWindow());
    EXPECT_EQ(application().orderedWindows().front(), panel.get());
    user().drag({300, 415}, {340, 455});
    EXPECT_EQ(window->frame().origin(), Point(130, 130)) << "by its title bar, from the first step on";
    application().stopModal();
  });
  application().runModal(panel);
  EXPECT_FALSE(surfaceOf(*panel).state().modal);
  EXPECT_EQ(surfaceOf(*panel).parent(), nullptr);
  panel->orderOut();
  user().click({200, 200});
  EXPECT_THAT(view->heard, testing::Contains("down1"));
}

TEST_F(ModalSessionTest, staysBeforeFloatingWindows) {
  const auto floating = showWindow({700, 100, 200, 200});
  floating->setLevel(WindowLevel::kFloating);
  later([&] {
    EXPECT_EQ(application().orderedWindows().front(), panel.get());
    window->setLevel(5);
    floating->orderFront();
    EXPECT_EQ(application().orderedWindows().front(), panel.get());
    EXPECT_EQ(desktop.windows().stack().back(), &surfaceOf(*panel));
    application().stopModal();
  });
  application().runModal(panel);
  EXPECT_EQ(panel->level(), WindowLevel::kNormal) << "above other programs only as long as it must be";
}

TEST_F(ModalSessionTest, nest) {
  const auto inner = NSPanel::make({50, 50, 100, 100}, kDocument);
  std::vector<int> responses;
  later([&] {
    later([&] {
      user().click(panel->frame().center());
      EXPECT_TRUE(inner->isKeyWindow());
      application().stopModal(2);
    });
    responses.push_back(application().runModal(inner));
    inner->close();
    EXPECT_TRUE(panel->isKeyWindow());
    EXPECT_EQ(application().modalWindow(), panel);
    application().stopModal(1);
  });
  responses.push_back(application().runModal(panel));
  EXPECT_THAT(responses, ElementsAre(2, 1));
}

TEST_F(ModalSessionTest, belongsToItsChildrenAndSheetsToo) {
  const auto child = makeWindow({900, 500, 100, 100}), sheet = makeWindow({0, 0, 100, 100});
  const auto childView = std::make_shared<RecordingView>();
  child->setContentView(childView);
  later([&] {
    panel->addChildWindow(child, WindowOrdering::above);
    child->orderFront();
    user().click({950, 550});
    user().click({950, 550});
    EXPECT_THAT(childView->heard, testing::Contains("down2"));
    panel->beginSheet(sheet, [&](int) { application().stopModal(5); });
    EXPECT_TRUE(sheet->isKeyWindow());
    user().click({200, 200});
    EXPECT_TRUE(sheet->isKeyWindow());
    panel->endSheet(*sheet);
  });
  EXPECT_EQ(application().runModal(panel), 5);
}

TEST_F(ModalSessionTest, dispatchesInsideALoopThatTracks) {
  const auto inPanel = std::make_shared<RecordingView>();
  panel->setContentView(inPanel);
  view->during = [&](const std::string& what, const EventPointer&) {
    if (what != "down1") return;
    window->trackEvents(eventMask(EventType::leftMouseUp), 1e9, [&](const EventPointer&, bool& stop) { stop = true; });
  };
  later([&] {
    user().together([&] {
      user().press({150, 120});
      user().then([&] {
        later([&] {
          later([&] {
            user().click(panel->frame().center());
            application().stopModal(1);
          });
          EXPECT_EQ(application().runModal(panel), 1);
          panel->orderOut();
        });
      });
      user().release();
    });
  });
  desktop.settle();
  EXPECT_THAT(inPanel->heard, testing::Contains("down1"));
}

}  // namespace
}  // namespace platform
