#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

/// A window at (100, 100), 400 x 300 of content under its title bar of 29, and a sheet of 200 x 150.
class SheetTest : public AppKitTest {
 public:
  std::shared_ptr<NSWindow> parent = showWindow();
  std::shared_ptr<NSWindow> sheet = makeWindow({0, 0, 200, 150});
  std::vector<int> responses;

  void begin(const std::shared_ptr<NSWindow>& window, const std::shared_ptr<NSWindow>& of) {
    of->beginSheet(window, [this](int response) { responses.push_back(response); });
    desktop.settle();
  }
  void begin() { begin(sheet, parent); }
};

TEST_F(SheetTest, hangsFromTheTitleBarAndTakesTheKeyboard) {
  begin();
  EXPECT_EQ(sheet->frame(), Rect(200, 250, 200, 150)) << "the content keeps its size, the title bar goes";
  EXPECT_TRUE(sheet->isSheet());
  EXPECT_EQ(parent->attachedSheet(), sheet);
  EXPECT_EQ(sheet->sheetParent(), parent.get());
  EXPECT_TRUE(sheet->isKeyWindow());
  EXPECT_TRUE(parent->isMainWindow());
  EXPECT_THAT(parent->childWindows(), ElementsAre(sheet));
  EXPECT_THAT(application().orderedWindows(), ElementsAre(sheet.get(), parent.get()));
  EXPECT_TRUE(surfaceOf(*sheet).state().modal);
  EXPECT_TRUE(surfaceOf(*sheet).state().skipsTaskbar);
  EXPECT_EQ(surfaceOf(*sheet).parent(), &surfaceOf(*parent));
  EXPECT_TRUE(surfaceOf(*sheet).isActive());
}

TEST_F(SheetTest, hangsFromWhereTheDelegateSays) {
  struct Placing : NSWindowDelegate {
    Rect proposed;
    Rect windowWillPositionSheetUsingRect(NSWindow&, NSWindow&, Rect rect) override {
      proposed = rect;
      return {100, 277, 200, 0};
    }
  };
  const auto delegate = std::make_shared<Placing>();
  parent->setDelegate(delegate);
  begin();
  EXPECT_EQ(delegate->proposed, Rect(0, 300, 400, 0));
  EXPECT_EQ(sheet->frame(), Rect(200, 227, 200, 150));
}

TEST_F(SheetTest, goesWhereItsParentGoes) {
  begin();
  const auto offset = [&] { return sheet->frame().origin() - parent->frame().origin(); };
  parent->setFrameOrigin({300, 400});
  EXPECT_EQ(offset(), Point(100, 150));
  user().drag({500, 715}, {440, 615});  // by the title bar, from the first of four steps on
  EXPECT_EQ(parent->frame().origin(), Point(255, 325));
  EXPECT_EQ(offset(), Point(100, 150));
  desktop.windows().userMoves(surfaceOf(*parent), {10, 20, 400, 329});
  desktop.settle();
  EXPECT_EQ(sheet->frame().origin(), Point(110, 170));
  EXPECT_EQ(surfaceOf(*sheet).state().frame, sheet->frame());

  parent->setFrame({10, 20, 600, 529}, true);
  EXPECT_EQ(sheet->frame(), Rect(210, 370, 200, 150)) << "centred below the title bar";
  sheet->setFrame({0, 0, 300, 100}, true);
  EXPECT_EQ(sheet->frame(), Rect(160, 420, 300, 100)) << "and again when its own size changes";

  parent->miniaturize();
  EXPECT_FALSE(sheet->isVisible());
  parent->deminiaturize();
  EXPECT_TRUE(sheet->isVisible());
  desktop.settle();
  EXPECT_TRUE(sheet->isKeyWindow());
  EXPECT_THAT(responses, IsEmpty());
}

TEST_F(SheetTest, cannotBeMovedOrResizedAlone) {
  begin();
  const Rect before = sheet->frame();
  user().drag({300, 395}, {350, 350});
  user().drag({399, 251}, {450, 200});
  EXPECT_EQ(sheet->frame(), before);
}

TEST_F(SheetTest, blocksItsParentsInputOnly) {
  const auto parentView = std::make_shared<RecordingView>();
  const auto otherView = std::make_shared<RecordingView>();
  parentView->focusable = otherView->focusable = true;
  parent->setContentView(parentView);
  parent->makeFirstResponder(parentView);
  const auto other = showWindow({700, 100, 200, 200});
  other->setContentView(otherView);
  other->makeFirstResponder(otherView);
  parent->makeKeyAndOrderFront(nullptr);
  std::vector<EventType> seen;
  application().addLocalMonitor(~std::uint64_t{0}, [&](const EventPointer& event) {
    seen.push_back(event->type);
    return event;
  });
  begin();

  user().click({150, 120});
  user().click({150, 120}, 1, headless::Button::right);
  user().wheel({150, 120}, 0, 10);
  user().key(KeyCode::kA, "a");
  EXPECT_THAT(parentView->heard, IsEmpty());
  EXPECT_THAT(seen, testing::Not(testing::Contains(EventType::leftMouseDown)));
  EXPECT_TRUE(parent->isInputBlocked());

  user().click({750, 150});
  user().click({750, 150});
  user().key(KeyCode::kA, "a");
  EXPECT_THAT(otherView->heard, testing::IsSupersetOf({"down2", "up2", "key a"}));
  EXPECT_FALSE(other->isInputBlocked());

  user().click({150, 120});
  EXPECT_TRUE(sheet->isKeyWindow()) << "a click on the blocked window calls its sheet";
  EXPECT_THAT(parentView->heard, IsEmpty());
  user().click({114, 414.5});
  EXPECT_FALSE(parent->isClosed()) << "the close button";
  desktop.windows().userCloses(surfaceOf(*parent));
  desktop.settle();
  EXPECT_FALSE(parent->isClosed()) << "the window manager's close";

  parent->endSheet(*sheet);
  user().click({150, 120});
  EXPECT_THAT(parentView->heard, testing::Contains("down1"));
}

TEST_F(SheetTest, endsOnceWhateverEndsIt) {
  struct Row {
    const char* name;
    std::function<void(SheetTest&)> end;
    int response;
    bool parentIsKey = true;
  };
  const Row rows[] = {
      {"its end", [](SheetTest& t) { t.parent->endSheet(*t.sheet, 7); }, 7},
      {"its end, twice",
       [](SheetTest& t) {
         t.parent->endSheet(*t.sheet);
         t.parent->endSheet(*t.sheet);
       },
       ModalResponse::kStop},
      {"its closing", [](SheetTest& t) { t.sheet->close(); }, ModalResponse::kAbort},
      {"the window manager closing it", [](SheetTest& t) { t.desktop.windows().userCloses(t.surfaceOf(*t.sheet)); },
       ModalResponse::kAbort},
      {"the parent's closing", [](SheetTest& t) { t.parent->close(); }, ModalResponse::kAbort, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    parent = showWindow();
    sheet = makeWindow({0, 0, 200, 150});
    responses.clear();
    begin();
    row.end(*this);
    desktop.settle();
    EXPECT_THAT(responses, ElementsAre(row.response));
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_FALSE(sheet->isSheet());
    EXPECT_EQ(parent->attachedSheet(), nullptr);
    EXPECT_EQ(parent->isKeyWindow(), row.parentIsKey);
    EXPECT_THAT(parent->childWindows(), IsEmpty());
    if (!sheet->isClosed()) {
      EXPECT_EQ(sheet->frame().size(), Size(200, 179)) << "the title bar is back";
    }
    sheet->close();
    parent->close();
    EXPECT_EQ(responses.size(), 1U);
  }
}

TEST_F(SheetTest, waitsForItsTurn) {
  const auto second = makeWindow({0, 0, 100, 100}), third = makeWindow({0, 0, 100, 100});
  begin();
  begin(second, parent);
  begin(third, parent);
  EXPECT_FALSE(second->isVisible());
  EXPECT_TRUE(second->isSheet());
  parent->endSheet(*third, 3);
  parent->endSheet(*sheet, 1);
  EXPECT_EQ(parent->attachedSheet(), second);
  EXPECT_TRUE(second->isVisible());
  EXPECT_TRUE(second->isKeyWindow());
  EXPECT_THAT(responses, ElementsAre(3, 1));
  begin(third, parent);
  parent->close();
  EXPECT_THAT(responses, ElementsAre(3, 1, ModalResponse::kAbort, ModalResponse::kAbort));
  EXPECT_TRUE(second->isClosed());
  EXPECT_FALSE(third->isClosed()) << "it never hung there";
}

TEST_F(SheetTest, refusesWhatCannotBe) {
  begin(parent, parent);
  begin(nullptr, parent);
  const auto closed = makeWindow();
  closed->close();
  begin(closed, parent);
  EXPECT_THAT(responses, ElementsAre(ModalResponse::kAbort, ModalResponse::kAbort, ModalResponse::kAbort));
  begin();
  begin(sheet, showWindow());
  begin(parent, sheet);
  EXPECT_EQ(responses.size(), 5U);
  EXPECT_EQ(sheet->sheetParent(), parent.get());
}

TEST_F(SheetTest, ofASheetBlocksBoth) {
  const auto inner = makeWindow({0, 0, 100, 80});
  begin();
  begin(inner, sheet);
  EXPECT_EQ(inner->frame(), Rect(250, 320, 100, 80));
  EXPECT_TRUE(sheet->isInputBlocked());
  user().click({150, 120});
  EXPECT_TRUE(inner->isKeyWindow());
  EXPECT_TRUE(parent->isMainWindow());
  sheet->endSheet(*inner, 2);
  EXPECT_TRUE(sheet->isKeyWindow());
  EXPECT_FALSE(sheet->isInputBlocked());
}

TEST_F(SheetTest, showsWithAWindowThatIsHiddenNow) {
  parent->orderOut();
  begin();
  EXPECT_FALSE(sheet->isVisible());
  parent->makeKeyAndOrderFront(nullptr);
  EXPECT_TRUE(sheet->isVisible());
  EXPECT_TRUE(sheet->isKeyWindow());
}

TEST_F(SheetTest, leavesTheFocusToAnotherWindowOfTheUsers) {
  const auto other = showWindow({700, 100, 200, 200});
  begin();
  EXPECT_TRUE(sheet->isVisible());
  EXPECT_TRUE(other->isKeyWindow());
}

TEST_F(SheetTest, thatWasHiddenForItselfLocksNothingUp) {
  begin();
  sheet->orderOut();
  EXPECT_FALSE(parent->isInputBlocked());
  EXPECT_TRUE(parent->isKeyWindow());
}

TEST_F(SheetTest, completionMayDoAnything) {
  const std::pair<const char*, std::function<void(SheetTest&)>> deeds[] = {
      {"close the sheet", [](SheetTest& t) { t.sheet->close(); }},
      {"close the parent", [](SheetTest& t) { t.parent->close(); }},
      {"begin again", [](SheetTest& t) { t.begin(); }},
      {"open a window", [](SheetTest& t) { t.showWindow(); }},
      {"throw", [](SheetTest&) { throw std::runtime_error("completion"); }},
  };
  const std::pair<const char*, std::function<void(SheetTest&)>> ends[] = {
      {"end", [](SheetTest& t) { t.parent->endSheet(*t.sheet); }},
      {"close", [](SheetTest& t) { t.sheet->close(); }},
      {"close the parent", [](SheetTest& t) { t.parent->close(); }},
  };
  for (const auto& [deedName, deed] : deeds)
    for (const auto& [endName, end] : ends) {
      SCOPED_TRACE(std::string(endName) + ", then " + deedName);
      parent = showWindow();
      sheet = makeWindow();
      int ended = 0;
      parent->beginSheet(sheet, [&, deed = deed](int) {
        ++ended;
        deed(*this);
      });
      try {
        end(*this);
        desktop.settle();
      } catch (const std::runtime_error&) {
      }
      EXPECT_EQ(ended, 1);
      for (const auto& window : application().windows()) window->close();
      desktop.settle();
    }
}

}  // namespace
}  // namespace platform
