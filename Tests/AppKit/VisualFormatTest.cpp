#include "Platform/AppKit/VisualFormat.h"

#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

class VisualFormatTest : public AppKitTest {
 protected:
  VisualFormatTest() {
    for (const auto& view : {icon, field}) {
      view->setTranslatesAutoresizingMaskIntoConstraints(false);
      container->addSubview(view);
    }
  }
  void apply(const std::string& format) {
    activateConstraints(constraintsWithVisualFormat(format, {{"icon", icon}, {"field_2", field}}));
  }
  /// A view's frame, measured from the container's top left.
  Rect fromTop(const std::shared_ptr<NSView>& view) {
    container->layoutSubtreeIfNeeded();
    const Rect frame = view->frame();
    return {frame.x, container->bounds().height - frame.maxY(), frame.width, frame.height};
  }

  std::shared_ptr<NSView> container = std::make_shared<NSView>(Rect{0, 0, 200, 60});
  std::shared_ptr<NSView> icon = std::make_shared<NSView>(Rect{1, 2, 3, 4});
  std::shared_ptr<NSView> field = std::make_shared<NSView>(Rect{5, 6, 7, 8});
};

TEST_F(VisualFormatTest, PlacesViewsAsTheFormatsSay) {
  apply("H:|-(8)-[icon(16)]-(4)-[field_2]-(12.5)-|");
  apply("V:|-(5)-[icon(16)]");
  apply("V:[field_2(20)]-(7)-|");
  EXPECT_EQ(fromTop(icon), Rect(8, 5, 16, 16));
  EXPECT_EQ(fromTop(field), Rect(28, 33, 159.5, 20));
  container->setFrame({0, 0, 100, 40});
  EXPECT_EQ(fromTop(icon), Rect(8, 5, 16, 16));
  EXPECT_EQ(fromTop(field), Rect(28, 13, 59.5, 20));
}

TEST_F(VisualFormatTest, AFormatThatCannotBeReadNamesThePlace) {
  struct Row {
    const char* format;
    std::size_t position;
    const char* problem;
  };
  const Row rows[] = {
      {"", 0, "\"H:\" or \"V:\" expected"},
      {"|-(5)-[icon]", 0, "\"H:\" or \"V:\" expected"},
      {"H:", 2, "\"[\" expected"},
      {"H:|[icon]", 3, "\"-(\" expected"},
      {"H:|-5-[icon]", 3, "\"-(\" expected"},
      {"H:|-()-[icon]", 5, "a number of points expected"},
      {"H:|-(-5)-[icon]", 5, "a number of points expected"},
      {"H:|-(nan)-[icon]", 5, "a number of points expected"},
      {"H:|-(inf)-[icon]", 5, "a number of points expected"},
      {"H:|-(5[icon]", 6, "\")-\" expected"},
      {"H:|-(5)-icon]", 8, "\"[\" expected"},
      {"V:[]", 3, "a view's name expected"},
      {"V:[other]", 3, "no view is called \"other\""},
      {"V:[icon(16]", 10, "\")\" expected"},
      {"V:[icon(16)", 11, "\"]\" expected"},
      {"V:[icon", 7, "\"]\" expected"},
      {"H:[icon]-(3)-", 13, "\"[\" expected"},
      {"H:[icon]-(3)-|-(1)-[field_2]", 14, "nothing may follow the last \"|\""},
      {"H:[icon] ", 8, "\"-(\" expected"},
      {"H:|-(1)-[alone]", 15, "\"|\" needs views that have a superview"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.format);
    try {
      constraintsWithVisualFormat(row.format,
                                  {{"icon", icon}, {"field_2", field}, {"alone", std::make_shared<NSView>()}});
      ADD_FAILURE() << "it was taken";
    } catch (const VisualFormatError& error) {
      EXPECT_EQ(error.position(), row.position);
      EXPECT_THAT(error.what(), testing::HasSubstr(std::string("\"") + row.format + "\": " + row.problem +
                                                   " at position " + std::to_string(row.position)));
    }
  }
}

TEST_F(VisualFormatTest, EveryTruncationIsRefusedOrAWholeFormatOfItsOwn) {
  const std::string whole = "H:|-(8)-[icon(16)]-(4)-[field_2]-(12)-|";
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const std::string cut = whole.substr(0, length);
    SCOPED_TRACE(cut);
    if (cut.ends_with(']')) {
      EXPECT_NO_THROW(apply(cut));
    } else {
      EXPECT_THROW(apply(cut), VisualFormatError);
    }
  }
}

}  // namespace
}  // namespace platform
