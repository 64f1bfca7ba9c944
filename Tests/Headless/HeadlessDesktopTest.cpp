#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Backends/Headless/HeadlessBackend.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Unicode.h"

namespace headless {
namespace {

using platform::Point;
using platform::Rect;
using platform::port::KeyDisposition;
using platform::port::KeyInput;
using platform::port::PointerAction;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kForever = std::numeric_limits<double>::infinity();

/// A window that writes down what its surface reports.
class Window final : public platform::port::SurfaceSink {
 public:
  Window(HeadlessBackend& desktop, std::string name, const Rect& frame, std::vector<std::string>& reports)
      : name_(std::move(name)), reports_(reports) {
    state.frame = frame;
    state.visible = true;
    surface = desktop.windows().makeSurface(*this, state);
  }
  HeadlessSurface& headless() const { return static_cast<HeadlessSurface&>(*surface); }

  void surfacePaint(platform::port::Canvas& canvas, const Rect& dirty) override {
    canvas.save();
    canvas.translate({10, 20});
    canvas.fill(dirty, {1, 0, 0, 1}, 4);
    canvas.restore();
  }
  void surfaceFrameChanged(const Rect& frame) override { note("frame " + platform::NSStringFromRect(frame)); }
  void surfaceActivated(bool active) override { note(active ? "active" : "inactive"); }
  void surfaceMinimised(bool minimised) override { note(minimised ? "minimised" : "restored"); }
  void surfaceZoomed(bool zoomed) override { note(zoomed ? "zoomed" : "unzoomed"); }
  void surfaceCloseRequested() override {
    note("close");
    surface.reset();
  }
  void surfacePointer(const platform::port::PointerInput& input) override {
    static constexpr const char* kNames[] = {"left down",  "left up",  "right down", "right up",
                                             "other down", "other up", "moved",      "exited"};
    note(kNames[static_cast<int>(input.action)]);
    if (onPointer) onPointer(input);
  }
  void surfaceWheel(const platform::port::WheelInput& input) override { note(fmt::format("wheel {}", input.deltaY)); }
  KeyDisposition surfaceKey(const KeyInput& input) override {
    keys.push_back(input);
    note((input.down ? "key " : "key up ") + input.characters);
    return input.down ? disposition : KeyDisposition::handled;
  }
  void surfaceKeyAfterInputMethod(const KeyInput& input) override { note("left by input method " + input.characters); }
  void surfaceMarkedText(const std::u16string& text, std::size_t caret) override {
    note(fmt::format("marked {} {}", platform::utf8(text), caret));
  }
  void surfaceCommittedText(const std::u16string& text) override { note("committed " + platform::utf8(text)); }
  void surfaceDeleteSurrounding(std::ptrdiff_t offset, std::size_t length) override {
    note(fmt::format("delete {} {}", offset, length));
  }
  std::optional<platform::port::TextInputState> surfaceTextInput() override { return std::nullopt; }
  bool surfaceDragMoved(const platform::port::Contents&, platform::Point) override { return false; }
  void surfaceDragExited() override {}
  bool surfaceDropped(const platform::port::Contents&, platform::Point) override { return false; }

  std::unique_ptr<platform::port::Surface> surface;
  platform::port::SurfaceState state;
  KeyDisposition disposition = KeyDisposition::handled;
  std::function<void(const platform::port::PointerInput&)> onPointer;
  std::vector<KeyInput> keys;

 private:
  void note(const std::string& what) { reports_.push_back(name_ + ": " + what); }
  std::string name_;
  std::vector<std::string>& reports_;
};

class HeadlessDesktop : public testing::Test {
 protected:
  std::vector<std::string> take() { return std::exchange(reports_, {}); }
  void settled() {
    desktop_.settle();
    reports_.clear();
  }

  HeadlessBackend desktop_;
  HeadlessUser& user_ = desktop_.user();
  std::vector<std::string> reports_;
};

TEST_F(HeadlessDesktop, ThePointerGoesToTheTopmostShownSurface) {
  const Window back(desktop_, "back", {0, 0, 100, 100}, reports_);
  Window front(desktop_, "front", {50, 0, 100, 100}, reports_);
  settled();
  const auto at = [&](Point point) { return desktop_.windows().surfaceAt(point); };
  EXPECT_EQ(at({60, 10}), &front.headless());
  EXPECT_EQ(at({10, 10}), &back.headless());
  EXPECT_EQ(at({500, 500}), nullptr);
  back.surface->restack(true, nullptr);
  EXPECT_EQ(at({60, 10}), &back.headless());
  front.state.level = 3;
  front.surface->apply(front.state);
  EXPECT_EQ(at({60, 10}), &front.headless()) << "a higher level stays above";
  front.surface->setMinimised(true);
  EXPECT_EQ(at({60, 10}), &back.headless());
}

TEST_F(HeadlessDesktop, WhatBelongsToASurfaceIsStackedWithIt) {
  const Window a(desktop_, "a", {0, 0, 10, 10}, reports_), child(desktop_, "child", {0, 0, 10, 10}, reports_),
      b(desktop_, "b", {0, 0, 10, 10}, reports_);
  child.surface->setParent(a.surface.get());
  EXPECT_THAT(desktop_.windows().stack(), ElementsAre(&a.headless(), &child.headless(), &b.headless()));
  a.surface->restack(true, b.surface.get());
  EXPECT_THAT(desktop_.windows().stack(), ElementsAre(&b.headless(), &a.headless(), &child.headless()));
  child.surface->restack(false, nullptr);
  a.surface->restack(false, child.surface.get());
  EXPECT_EQ(desktop_.windows().stack().size(), 3u) << "not below its own child, and nothing is lost";
}

TEST_F(HeadlessDesktop, APressActivatesAndHoldsThePointerUntilTheRelease) {
  const Window a(desktop_, "a", {0, 0, 100, 100}, reports_), b(desktop_, "b", {200, 0, 100, 100}, reports_);
  a.surface->activate();
  settled();
  user_.drag({250, 50}, {50, 50}, 1);
  EXPECT_THAT(take(), ElementsAre("b: moved", "a: inactive", "b: active", "b: left down", "b: moved", "b: left up"));
  user_.moveTo({50, 50});
  EXPECT_THAT(take(), ElementsAre("b: exited", "a: moved"));
  user_.wheel({250, 50}, 0, -3);
  EXPECT_THAT(take(), ElementsAre("b: wheel -3"));
}

TEST_F(HeadlessDesktop, ANestedLoopTakesTheRestOfADrag) {
  const platform::Session session(desktop_);
  Window a(desktop_, "a", {0, 0, 100, 100}, reports_);
  bool tracking = false, released = false;
  a.onPointer = [&](const auto& input) {
    released |= input.action == PointerAction::leftUp;
    if (input.action != PointerAction::leftDown) return;
    tracking = true;
    EXPECT_TRUE(platform::RunLoop::main().runUntil([&] { return released; }, kForever));
    tracking = false;
  };
  bool seenInside = false;
  user_.together([&] {
    user_.press({50, 50});
    user_.moveTo({60, 60});
    user_.then([&] { seenInside = tracking; });
    user_.release();
  });
  EXPECT_TRUE(seenInside);
  EXPECT_FALSE(tracking);
  EXPECT_TRUE(released);
}

TEST_F(HeadlessDesktop, TheMachineMovesAWindowWithThePointer) {
  const struct {
    const char* name;
    bool unsupported, atEnd;
    std::vector<std::string> reports;
  } rows[] = {
      {"step by step",
       false,
       false,
       {"a: left down", "a: frame {{10, 0}, {100, 100}}", "a: frame {{20, 0}, {100, 100}}", "a: left up"}},
      {"told at the end", false, true, {"a: left down", "a: frame {{20, 0}, {100, 100}}", "a: left up"}},
      {"unsupported", true, false, {"a: left down", "a: moved", "a: moved", "a: left up"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    desktop_.faults().moveUnsupported = row.unsupported;
    desktop_.faults().moveReportedAtEnd = row.atEnd;
    Window a(desktop_, "a", {0, 0, 100, 100}, reports_);
    a.surface->activate();
    EXPECT_FALSE(a.surface->beginMove()) << "no button is down";
    user_.moveTo({50, 50});
    settled();
    a.onPointer = [&](const auto& input) {
      if (input.action != PointerAction::leftDown) return;
      EXPECT_EQ(a.surface->beginMove(), !row.unsupported);
    };
    user_.together([&] {
      user_.press();
      user_.moveTo({60, 50});
      user_.moveTo({70, 50});
      user_.release();
    });
    EXPECT_EQ(take(), row.reports);
  }
}

TEST_F(HeadlessDesktop, TheWindowManagerReportsWhatTheUserDid) {
  Window a(desktop_, "a", {0, 0, 100, 100}, reports_);
  HeadlessWindowHost& windows = desktop_.windows();
  settled();
  const struct {
    const char* name;
    std::function<void()> action;
    std::vector<std::string> reports;
  } rows[] = {
      {"activates", [&] { windows.userActivates(a.headless()); }, {"a: active"}},
      {"moves",
       [&] {
         windows.userMoves(a.headless(), {5, 5, 50, 50});
       },
       {"a: frame {{5, 5}, {50, 50}}"}},
      {"zooms", [&] { windows.userZooms(a.headless()); }, {"a: frame {{0, 0}, {1440, 876}}", "a: zoomed"}},
      {"unzooms", [&] { windows.userZooms(a.headless(), false); }, {"a: frame {{5, 5}, {50, 50}}", "a: unzoomed"}},
      {"minimises", [&] { windows.userMinimises(a.headless()); }, {"a: inactive", "a: minimised"}},
      {"restores", [&] { windows.userMinimises(a.headless(), false); }, {"a: restored", "a: active"}},
      {"leaves", [&] { windows.userDeactivatesAll(); }, {"a: inactive"}},
      {"closes", [&] { windows.userCloses(a.headless()); }, {"a: close"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    row.action();
    EXPECT_THAT(reports_, IsEmpty()) << "reports come with the next turn";
    desktop_.settle();
    EXPECT_EQ(take(), row.reports);
  }
  EXPECT_THAT(windows.stack(), IsEmpty());
}

TEST_F(HeadlessDesktop, HeldReportsComeInOrderAndNoneForADeadSurface) {
  auto a = std::make_unique<Window>(desktop_, "a", Rect(0, 0, 10, 10), reports_);
  const Window b(desktop_, "b", {0, 0, 10, 10}, reports_);
  desktop_.windows().holdReports(true);
  a->surface->activate();
  b.surface->activate();
  desktop_.settle();
  EXPECT_THAT(take(), IsEmpty());
  a.reset();
  desktop_.windows().holdReports(false);
  desktop_.settle();
  EXPECT_THAT(take(), ElementsAre("b: active"));
}

TEST_F(HeadlessDesktop, KeysPassTheInputMethodTheApplicationLeavesThemTo) {
  Window a(desktop_, "a", {0, 0, 100, 100}, reports_);
  user_.key(0, "a");
  EXPECT_THAT(take(), IsEmpty()) << "nobody has the focus";
  a.surface->activate();
  settled();
  user_.key(0, "a");
  EXPECT_THAT(take(), ElementsAre("a: key a", "a: key up a"));

  a.disposition = KeyDisposition::inputMethod;
  user_.keyDown(0, "a");
  EXPECT_THAT(take(), ElementsAre("a: key a", "a: left by input method a"));

  HeadlessInputMethod& inputMethod = desktop_.inputMethod();
  inputMethod.setFilter([&](const KeyInput& key) {
    if (key.characters == "g") inputMethod.compose(u"ㅎ");
    if (key.characters == "\r") inputMethod.commit(inputMethod.preedit());
    return key.characters == "g" || key.characters == "\r";
  });
  user_.keyDown(5, "g");
  user_.keyDown(36);
  inputMethod.deleteSurrounding(-2, 1);
  EXPECT_THAT(take(), ElementsAre("a: key g", "a: marked ㅎ 1", "a: key \r", "a: committed ㅎ", "a: delete -2 1"));
  inputMethod.compose(u"한", 0);
  a.surface->textInputChanged(true);
  EXPECT_TRUE(inputMethod.preedit().empty());
  EXPECT_EQ(inputMethod.resetCount(), 1);
}

TEST_F(HeadlessDesktop, TypedCharactersComeFromTheirKeys) {
  Window a(desktop_, "a", {0, 0, 100, 100}, reports_);
  a.surface->activate();
  const struct {
    const char* text;
    std::uint16_t keyCode;
    std::uint64_t modifiers;
    const char* characters;
  } rows[] = {{"a", 0, 0x100, "a"},    {"V", 9, 0x20100, "V"}, {" ", 49, 0x100, " "}, {"?", 44, 0x20100, "?"},
              {"\n", 36, 0x100, "\r"}, {"0", 29, 0x100, "0"},  {"m", 46, 0x100, "m"}, {"한", 10, 0x100, "한"},
              {"`", 50, 0x100, "`"},   {".", 47, 0x100, "."}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    a.keys.clear();
    user_.type(row.text);
    ASSERT_EQ(a.keys.size(), 2u);
    EXPECT_EQ(a.keys[0].keyCode, row.keyCode);
    EXPECT_EQ(a.keys[0].modifiers, row.modifiers);
    EXPECT_EQ(a.keys[0].characters, row.characters);
  }
  a.keys.clear();
  user_.key(123, {}, 0x40000);
  EXPECT_EQ(a.keys[0].modifiers, 0xA40100u) << "arrows say that they are function keys of the number pad";
  user_.key(0, "a", 0x40000);
  EXPECT_EQ(a.keys[2].characters, "\x01");
  EXPECT_EQ(a.keys[2].charactersIgnoringModifiers, "a");
}

TEST_F(HeadlessDesktop, DirtySurfacesArePaintedWithTheTurn) {
  Window a(desktop_, "a", {0, 0, 100, 100}, reports_);
  EXPECT_EQ(a.headless().paintCount(), 0);
  desktop_.settle();
  EXPECT_EQ(a.headless().paintCount(), 1);
  EXPECT_THAT(a.headless().painted().lines(), ElementsAre("fill {{10, 20}, {100, 100}} #ff0000ff radius 4"));
  a.surface->invalidate({0, 0, 5, 5});
  a.surface->invalidate({10, 10, 500, 5});
  desktop_.settle();
  EXPECT_THAT(a.headless().painted().lines(), ElementsAre("fill {{10, 20}, {100, 15}} #ff0000ff radius 4"));
  EXPECT_EQ(a.headless().painted().openSaves(), 0u);
  a.state.visible = false;
  a.surface->apply(a.state);
  a.surface->invalidate({0, 0, 5, 5});
  desktop_.settle();
  EXPECT_EQ(a.headless().paintCount(), 2) << "nothing is painted off the screen";
}

TEST_F(HeadlessDesktop, TheJournalTellsEachChangeOnce) {
  Window a(desktop_, "a", {0, 0, 100, 100}, reports_);
  desktop_.journal().take();
  a.state.title = "Chat";
  a.state.level = 3;
  for (int i = 0; i < 2; ++i) a.surface->apply(a.state);
  a.surface->setZoomed(true);
  EXPECT_THAT(desktop_.journal().take(), ElementsAre("surface 1: level 3", "surface 1: title Chat", "surface 1: zoom"));
  EXPECT_EQ(desktop_.windows().surfaceTitled("Chat"), &a.headless());
}

TEST_F(HeadlessDesktop, FaultsRefuseWhatTheyName) {
  Window a(desktop_, "a", {0, 0, 100, 100}, reports_);
  desktop_.faults() = {.broadcastDown = false,
                       .clipboardFailing = true,
                       .activationRefused = true,
                       .moveUnsupported = false,
                       .moveReportedAtEnd = false,
                       .minimiseUnsupported = true,
                       .zoomUnsupported = true};
  a.surface->activate();
  a.surface->setMinimised(true);
  a.surface->setZoomed(true);
  desktop_.clipboard().write({{"text/plain", "x"}});
  desktop_.settle();
  EXPECT_THAT(reports_, IsEmpty());
  desktop_.faults() = {};
  EXPECT_FALSE(desktop_.clipboard().read("text/plain")) << "what was written meanwhile is lost";
  desktop_.clipboard().write({{"text/plain", "y"}});
  EXPECT_EQ(desktop_.clipboard().read("text/plain"), "y");
}

TEST_F(HeadlessDesktop, ScreensChangeIsToldOnce) {
  int told = 0;
  desktop_.windows().setScreensChanged([&] { ++told; });
  const auto screens = desktop_.windows().screens();
  desktop_.setScreens(screens);
  desktop_.setScreens({screens[0], {{1440, 0, 800, 600}, {1440, 0, 800, 600}, 2}});
  EXPECT_EQ(told, 0);
  desktop_.settle();
  EXPECT_EQ(told, 1);
  EXPECT_EQ(desktop_.windows().screens().size(), 2u);
}

TEST_F(HeadlessDesktop, FoldersGoWithTheDesktop) {
  std::filesystem::path home;
  {
    HeadlessBackend other;
    home = other.folders().home;
    EXPECT_NE(home, desktop_.folders().home);
    std::filesystem::create_directories(other.folders().cache / "deep");
  }
  EXPECT_FALSE(std::filesystem::exists(home));
}

TEST(HeadlessLoop, AnEndlessWaitForNothingIsAnError) {
  HeadlessLoop loop;
  EXPECT_THROW(loop.wait(kForever), std::runtime_error);
  loop.wake();
  EXPECT_NO_THROW(loop.wait(kForever));
  loop.wait(3);
  EXPECT_EQ(loop.now(), 3);
  loop.wait(1);
  EXPECT_EQ(loop.now(), 3) << "the clock never goes back";
  const double wallClock = loop.wallClock();
  loop.shiftWallClock(-3600);
  EXPECT_EQ(loop.wallClock(), wallClock - 3600);
  EXPECT_EQ(loop.now(), 3);
}

TEST(HeadlessLoop, AWatchedDescriptorIsWaitedFor) {
  HeadlessLoop loop;
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
  std::string got;
  std::uint64_t watch = 0;
  watch = loop.watch(ends[0], [&] {
    char byte = 0;
    ASSERT_EQ(read(ends[0], &byte, 1), 1);
    got += byte;
    if (got == "ab") loop.unwatch(watch);
  });
  ASSERT_EQ(write(ends[1], "abc", 3), 3);
  loop.wait(kForever);
  loop.wait(kForever);
  EXPECT_THROW(loop.wait(kForever), std::runtime_error) << "no longer watched";
  EXPECT_EQ(got, "ab");
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
}  // namespace headless
