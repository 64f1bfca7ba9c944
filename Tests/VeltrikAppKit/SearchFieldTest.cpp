#include "VeltrikAppKit/SearchField.h"

#include "Platform/AppKit/NSTextView.h"
#include "Tests/VeltrikAppKit/PluginTest.h"

namespace veltrik {
namespace {

namespace KeyCode = platform::KeyCode;

/// A search field of 200 points in a key and main window, with what it told since the last `take`.
class SearchFieldTest : public PluginTest {
 protected:
  SearchFieldTest() : window(makeNativeWindow({100, 100, 400, 300})), field(SearchField::make()) {
    field->setFocused([this](const std::string& text) { told.push_back("focused '" + text + "'"); });
    field->setArrowKeyDidDown([this](bool down) { told.emplace_back(down ? "down" : "up"); });
    field->setDidEndEditing([this] { told.emplace_back("end"); });
    field->setTextChanged([this](const std::string& text) { told.push_back("'" + text + "'"); });
    field->setFrame({50, 100, 200, 26});
    window->contentView()->addSubview(field);
    window->makeKeyAndOrderFront(nullptr);
    desktop.settle();
  }

  Point centerOf(NSView& view) const {
    return window->convertPointToScreen(view.convertTo(view.bounds().center(), nullptr));
  }
  void clickText() {
    desktop.advance(1);  // not a double click
    desktop.user().click(centerOf(field->textField()));
  }
  void clickCancel() { desktop.user().click(centerOf(field->cancelButton())); }
  std::vector<std::string> take() { return std::exchange(told, {}); }
  std::string text() { return field->textField().stringValue(); }
  std::shared_ptr<platform::NSTextView> editor() {
    return std::dynamic_pointer_cast<platform::NSTextView>(window->firstResponder());
  }
  /// A view's frame in the search field, measured from the top left.
  Rect fromTop(const NSView& view) const {
    const Rect frame = view.convertTo(view.bounds(), field.get());
    return {frame.x, field->bounds().height - frame.maxY(), frame.width, frame.height};
  }

  std::shared_ptr<NSWindow> window;
  std::shared_ptr<SearchField> field;
  std::vector<std::string> told;
};

TEST_F(SearchFieldTest, ItsPartsStandWhereTheyShould) {
  for (const double width : {200.0, 120.0, 333.0}) {
    SCOPED_TRACE(width);
    field->setFrame({50, 100, width, 26});
    desktop.settle();
    EXPECT_EQ(fromTop(field->searchIconImageView()), Rect(8, 5, 16, 16));
    EXPECT_EQ(fromTop(field->textField()), Rect(32, 5, width - 59, 18));
    EXPECT_EQ(fromTop(field->cancelButton()), Rect(width - 24, 5, 16, 16));
  }
  EXPECT_EQ(field->textField().placeholderString(), "검색해보세요");
  EXPECT_THAT(log, IsEmpty());
  clickText();
  NSView* const candidate = editor()->superview()->superview();
  EXPECT_EQ(candidate->tag(), 100) << "two levels above the editor";
  EXPECT_EQ(candidate, &field->textField());
  EXPECT_EQ(candidate->superview(), field.get());
}

TEST_F(SearchFieldTest, TheButtonClearsReportsOnceAndStays) {
  struct Row {
    const char* name;
    bool focused;
    bool composing;
  };
  for (const Row& row : {Row{"with the focus", true, false}, Row{"in a composition", true, true},
                         Row{"without the focus", false, false}}) {
    SCOPED_TRACE(row.name);
    clickText();
    desktop.user().type("ab");
    if (row.composing) desktop.inputMethod().compose(u"한");
    if (!row.focused) window->makeFirstResponder(nullptr);
    take();
    clickCancel();
    EXPECT_THAT(take(), ElementsAre("''"));
    EXPECT_EQ(text(), "");
    EXPECT_EQ(desktop.inputMethod().preedit(), u"");
    EXPECT_FALSE(field->cancelButton().isHidden());
    EXPECT_EQ(editor() != nullptr, row.focused) << "the button leaves the focus where it is";
    clickText();
    desktop.user().type("c");
    desktop.user().key(KeyCode::kBackspace);
    EXPECT_TRUE(field->cancelButton().isHidden());
    window->makeFirstResponder(nullptr);
  }
}

TEST_F(SearchFieldTest, TheButtonOfAnotherFieldLeavesThisOneAlone) {
  const auto other = SearchField::make();
  other->setFrame({50, 150, 200, 26});
  window->contentView()->addSubview(other);
  desktop.settle();
  window->makeFirstResponder(std::static_pointer_cast<NSView>(other->textField().shared_from_this()));
  desktop.user().type("other");
  clickText();
  desktop.user().type("this");
  desktop.user().click(centerOf(other->cancelButton()));
  EXPECT_EQ(other->textField().stringValue(), "");
  EXPECT_EQ(text(), "this");
}

TEST_F(SearchFieldTest, APressThatLeavesTheButtonIsNoClick) {
  clickText();
  desktop.user().type("ab");
  take();
  const Point button = centerOf(field->cancelButton());
  desktop.user().drag(button, button + Point{40, 0});
  EXPECT_EQ(text(), "ab");
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(SearchFieldTest, ArrowsAreTheFieldsAndTheirReleasesTheHosts) {
  struct Row {
    std::uint16_t code;
    const char* report;
  };
  for (const std::uint16_t code : {KeyCode::kDownArrow, KeyCode::kUpArrow, KeyCode::kEscape}) desktop.user().key(code);
  EXPECT_EQ(host->keys.size(), 6U) << "keys elsewhere are none of the field's";
  EXPECT_THAT(take(), IsEmpty());
  clickText();
  for (const bool listens : {true, false}) {
    if (!listens) field->setArrowKeyDidDown(nullptr);
    for (const Row& row : {Row{KeyCode::kDownArrow, "down"}, Row{KeyCode::kUpArrow, "up"}}) {
      SCOPED_TRACE(std::string(row.report) + (listens ? "" : ", nobody listens"));
      take();
      host->keys.clear();
      desktop.user().keyDown(row.code);
      EXPECT_THAT(host->keys, IsEmpty());
      EXPECT_EQ(take(), listens ? std::vector<std::string>{row.report} : std::vector<std::string>{});
      desktop.user().keyUp(row.code);
      EXPECT_THAT(host->keys, ElementsAre("key " + std::to_string(row.code) + " [ ] 1"));
    }
  }
}

TEST_F(SearchFieldTest, EditingEndsOnceHoweverTheFocusGoes) {
  struct Row {
    const char* name;
    std::function<void()> leave;
  };
  const Row rows[] = {
      {"to another view", [&] { window->makeFirstResponder(window->contentView()); }},
      {"hidden", [&] { field->setHidden(true); }},
      {"taken out", [&] { field->removeFromSuperview(); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    clickText();
    take();
    row.leave();
    EXPECT_THAT(take(), ElementsAre("end"));
    EXPECT_FALSE(field->textField().currentEditor());
    field->setHidden(false);
    window->contentView()->addSubview(field);
    desktop.settle();
  }
}

TEST_F(SearchFieldTest, AnOwnerThatDropsItInsideAnyCallbackIsSafe) {
  struct Row {
    const char* name;
    std::function<void()> cause;
  };
  const Row rows[] = {
      {"focused", [&] { clickText(); }},
      {"textChanged", [&] { desktop.user().type("a"); }},
      {"arrowKeyDidDown", [&] { desktop.user().key(KeyCode::kDownArrow); }},
      {"didEndEditing", [&] { window->makeFirstResponder(nullptr); }},
      {"textChanged by the button", [&] { clickCancel(); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    if (field) field->removeFromSuperview();
    field = SearchField::make();
    field->setFrame({50, 100, 200, 26});
    window->contentView()->addSubview(field);
    desktop.settle();
    if (std::string(row.name) != "focused") clickText();
    if (std::string(row.name) == "textChanged by the button") desktop.user().type("a");
    const auto drop = [&] {
      if (!field) return;
      field->removeFromSuperview();
      field.reset();
    };
    field->setFocused([&](const std::string&) { drop(); });
    field->setArrowKeyDidDown([&](bool) { drop(); });
    field->setDidEndEditing(drop);
    field->setTextChanged([&](const std::string&) { drop(); });
    row.cause();
    EXPECT_FALSE(field);
  }
}

}  // namespace
}  // namespace veltrik
