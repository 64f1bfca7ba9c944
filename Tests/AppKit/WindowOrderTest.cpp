#include "Tests/AppKit/AppKitTest.h"

namespace platform {
namespace {

/// Windows A to F; each row gives orders and the expected sequence, front-most first. The machine's own stack must
/// agree.
class WindowOrderTest : public AppKitTest {
 protected:
  void SetUp() override { startAnew(); }
  void startAnew() {
    for (const auto& window : windows_) window->close();
    windows_.clear();
    for (char name = 'A'; name <= 'F'; ++name) windows_.push_back(makeWindow());
  }
  NSWindow& window(char name) { return *windows_[static_cast<std::size_t>(name - 'A')]; }
  std::shared_ptr<NSWindow> shared(char name) { return windows_[static_cast<std::size_t>(name - 'A')]; }
  char nameOf(const NSWindow* window) {
    for (std::size_t i = 0; i < windows_.size(); ++i)
      if (windows_[i].get() == window) return static_cast<char>('A' + i);
    return '?';
  }
  std::string order() {
    std::string names;
    for (const NSWindow* each : application().orderedWindows()) names += nameOf(each);
    return names;
  }
  std::string machineOrder() {
    std::string names;
    const auto stack = desktop.windows().stack();
    for (auto each = stack.rbegin(); each != stack.rend(); ++each)
      if ((*each)->isShown())
        for (const auto& window : windows_)
          if (window->nativeHandle() == (*each)->nativeHandle()) names += nameOf(window.get());
    return names;
  }

  /// "A" orders A front, "-A" out, "A3" sets its level, "A<B" orders it below, "A>B" above, "A+B" makes B a child of A
  /// above it, "A_B" below it, "mA" miniaturizes, "dA" brings back, "xA" closes.
  void perform(const std::string& step) {
    if (step[0] == '-') return window(step[1]).orderOut();
    if (step[0] == 'm') return window(step[1]).miniaturize();
    if (step[0] == 'd') return window(step[1]).deminiaturize();
    if (step[0] == 'x') return window(step[1]).close();
    NSWindow& subject = window(step[0]);
    if (step.size() == 1) return subject.orderFront();
    if (step[1] == '<')
      return subject.order(WindowOrdering::below, step.size() > 2 ? window(step[2]).windowNumber() : 0);
    if (step[1] == '>') return subject.order(WindowOrdering::above, window(step[2]).windowNumber());
    if (step[1] == '+') return subject.addChildWindow(shared(step[2]), WindowOrdering::above);
    if (step[1] == '_') return subject.addChildWindow(shared(step[2]), WindowOrdering::below);
    subject.setLevel(step[1] - '0');
  }

 private:
  std::vector<std::shared_ptr<NSWindow>> windows_;
};

TEST_F(WindowOrderTest, followsLevelsFamiliesAndOrders) {
  struct Row {
    const char* name;
    std::vector<std::string> steps;
    const char* expected;
  };
  const Row rows[] = {
      {"the last one ordered is in front", {"A", "B", "C"}, "CBA"},
      {"ordering again raises", {"A", "B", "C", "A"}, "ACB"},
      {"a hidden window is out of the order", {"A", "B", "-B"}, "A"},
      {"a floating window stays in front", {"A", "B3", "B", "C", "A"}, "BAC"},
      {"a level set while shown moves at once", {"A", "B", "C", "A3"}, "ACB"},
      {"back to the normal level, in front of it", {"A", "B", "C", "A3", "A0"}, "ACB"},
      {"below another", {"A", "B", "C", "C<A"}, "BAC"},
      {"below all", {"A", "B", "C", "C<"}, "BAC"},
      {"above another", {"A", "B", "C", "A>B"}, "CAB"},
      {"below a hidden window counts as below all", {"A", "B", "C<F"}, "BAC"},
      {"relative to a window of another level stays in the own level", {"A", "B", "C3", "C", "A>C"}, "CAB"},
      {"a child comes with its parent", {"A", "B", "C", "A+B", "C", "A"}, "BAC"},
      {"a parent comes with its child", {"A", "B", "C", "A+B", "C", "B"}, "BAC"},
      {"a child below", {"A", "B", "C", "A_B", "C", "B"}, "ABC"},
      {"grandchildren", {"A", "B", "C", "D", "A+B", "B+C", "D", "A"}, "CBAD"},
      {"the newest sibling lies on top", {"A", "B", "C", "A+B", "A+C", "B"}, "BCA"},
      {"below its own parent a child stays where its family is", {"A", "B", "C", "A+B", "B<A"}, "BAC"},
      {"shown below its own parent it comes with its family", {"A", "B", "C", "A+B", "-B", "C", "B<A"}, "BAC"},
      {"a floating child above a normal parent", {"A", "B", "C", "A+B", "B3", "C"}, "BCA"},
      {"a child is never under its floating parent", {"A", "B", "A+B", "A3", "C"}, "BAC"},
      {"hiding hides the children", {"A", "B", "C", "A+B", "-A"}, "C"},
      {"showing shows what was hidden along", {"A", "B", "C", "A+B", "-A", "A"}, "BAC"},
      {"a child hidden by itself stays hidden", {"A", "B", "C", "A+B", "-B", "-A", "A"}, "AC"},
      {"miniaturizing takes the children away", {"A", "B", "C", "A+B", "mA"}, "C"},
      {"and brings them back", {"A", "B", "C", "A+B", "mA", "dA"}, "BAC"},
      {"ordering a miniaturized window front brings it back", {"A", "B", "mA", "A"}, "AB"},
      {"closing closes the children", {"A", "B", "C", "A+B", "xA"}, "C"},
      {"a circle of parents is refused", {"A", "B", "C", "A+B", "B+A", "C", "A"}, "BAC"},
      {"a new parent takes the child from the old one", {"A", "B", "C", "A+B", "C+B", "A"}, "ABC"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    startAnew();
    for (const auto& step : row.steps) perform(step);
    EXPECT_EQ(order(), row.expected);
    desktop.settle();
    EXPECT_EQ(order(), row.expected) << "after what the machine reported";
    EXPECT_EQ(machineOrder(), row.expected) << "on the machine";
    for (std::size_t i = 0; i < order().size(); ++i) EXPECT_EQ(window(order()[i]).orderedIndex(), i);
  }
}

TEST_F(WindowOrderTest, aMinimiseThatWasRevokedIsNotHeardOfAgain) {
  std::vector<std::string> log;
  const auto delegate = std::make_shared<RecordingDelegate>("A", log);
  window('A').orderFront();
  desktop.settle();
  window('A').setDelegate(delegate);
  window('A').miniaturize();
  window('A').deminiaturize();
  desktop.settle();
  EXPECT_TRUE(window('A').isVisible());
  EXPECT_EQ(std::count(log.begin(), log.end(), "A miniaturized"), 1);
  EXPECT_EQ(std::count(log.begin(), log.end(), "A deminiaturized"), 1);
  desktop.windows().userMinimises(surfaceOf(window('A')));
  desktop.settle();
  EXPECT_TRUE(window('A').isMiniaturized()) << "the user's own is";
}

TEST_F(WindowOrderTest, aFamilyIsMinimisedAsOneWhereverTheMachineBegins) {
  for (const char first : {'A', 'B'}) {
    SCOPED_TRACE(first);
    startAnew();
    perform("A");
    perform("B");
    perform("A+B");
    desktop.settle();
    desktop.windows().userMinimises(surfaceOf(window(first)));
    desktop.settle();
    EXPECT_TRUE(window('A').isMiniaturized());
    EXPECT_EQ(order(), "");
    desktop.windows().userMinimises(surfaceOf(window('A')), false);
    desktop.settle();
    EXPECT_EQ(order(), "BA");
  }
}

}  // namespace
}  // namespace platform
