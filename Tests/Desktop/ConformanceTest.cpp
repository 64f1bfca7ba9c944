#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <thread>

#include "Tests/Desktop/Machine.h"
#include "Tests/Desktop/RecordingSink.h"

namespace desktop_tests {

using platform::Rect;
using platform::port::Surface;
using platform::port::SurfaceState;
using platform::port::TextOptions;
using platform::port::TextRun;
using platform::port::Wrapping;

namespace {

/// What every back end must do, seen through the port and by an observer outside of it.
class Conformance : public testing::TestWithParam<const char*> {
 protected:
  Conformance() : own_(std::string(GetParam()) == "Headless" ? makeHeadlessMachine() : nullptr) {}

  Machine& machine() { return own_ ? *own_ : desktopMachine(); }
  platform::port::Backend& backend() { return machine().backend(); }
  platform::port::LoopDriver& loop() { return backend().loop(); }

  std::unique_ptr<Surface> show(RecordingSink& sink, const Rect& frame, const std::string& title = "Window") {
    SurfaceState state = shownAt(frame);
    state.title = title;
    auto surface = backend().windows().makeSurface(sink, state);
    EXPECT_TRUE(machine().spin([&] { return sink.paints > 0; })) << title << " was never painted";
    return surface;
  }
  void expectSoon(const std::function<bool()>& condition, const char* what) {
    EXPECT_TRUE(machine().spin(condition)) << what;
  }

 private:
  std::unique_ptr<Machine> own_;
};

INSTANTIATE_TEST_SUITE_P(, Conformance, testing::Values("Headless", "Desktop"),
                         [](const auto& each) { return std::string(each.param); });

TEST_P(Conformance, AFrameThatIsSetIsShownOverTenRoundsOfHidingAndShowing) {
  RecordingSink sink;
  SurfaceState state = shownAt({120, 140, 400, 300});
  const auto surface = backend().windows().makeSurface(sink, state);
  for (int round = 0; round < 10; ++round) {
    SCOPED_TRACE(round);
    state.visible = false;
    surface->apply(state);
    state.frame = {120.0 + 7 * round, 140.0 + 11 * round, 400.0 + round, 300.0 - round};
    surface->apply(state);
    state.visible = true;
    surface->apply(state);
    expectSoon([&] { return machine().frameOf(surface->nativeHandle()) == state.frame; }, "the frame is not shown");
  }
  EXPECT_TRUE(sink.frames.empty()) << "nobody but us moved the window";
}

TEST_P(Conformance, StackingPutsAWindowDirectlyAboveOrBelowAnother) {
  RecordingSink sinks[3];
  std::vector<std::unique_ptr<Surface>> windows;
  for (int i = 0; i < 3; ++i) windows.push_back(show(sinks[i], {100.0 + 50 * i, 100, 300, 200}));
  const auto expectOrder = [&](int low, int middle, int high, const char* what) {
    expectSoon(
        [&] {
          return machine().isAbove(windows[middle]->nativeHandle(), windows[low]->nativeHandle()) &&
                 machine().isAbove(windows[high]->nativeHandle(), windows[middle]->nativeHandle());
        },
        what);
  };
  windows[0]->restack(true, nullptr);
  expectOrder(1, 2, 0, "above all");
  windows[0]->restack(false, nullptr);
  expectOrder(0, 1, 2, "below all");
  windows[0]->restack(true, windows[1].get());
  expectOrder(1, 0, 2, "above a sibling");
  windows[2]->restack(false, windows[0].get());
  expectOrder(1, 2, 0, "below a sibling");
}

TEST_P(Conformance, ALevelAboveNormalLastsOverHidingAndShowing) {
  RecordingSink sink;
  const auto surface = show(sink, {100, 100, 300, 200});
  SurfaceState state = shownAt({100, 100, 300, 200});
  struct Step {
    const char* name;
    int level;
    bool visible, above;
  };
  for (const Step& step : {Step{"raised", 3, true, true}, Step{"hidden", 3, false, false},
                           Step{"shown again", 3, true, true}, Step{"back to normal", 0, true, false}}) {
    state.level = step.level;
    state.visible = step.visible;
    surface->apply(state);
    if (step.visible)
      expectSoon([&] { return machine().staysAbove(surface->nativeHandle()) == step.above; }, step.name);
  }
}

TEST_P(Conformance, OpacityAndTitleAreSeenFromOutside) {
  RecordingSink sink;
  const auto surface = show(sink, {100, 100, 300, 200});
  SurfaceState state = shownAt({100, 100, 300, 200});
  state.alpha = 0.5;
  state.title = "Changed";
  surface->apply(state);
  expectSoon([&] { return std::abs(machine().opacityOf(surface->nativeHandle()) - 0.5) < 0.01; }, "opacity");
  expectSoon([&] { return machine().titleOf(surface->nativeHandle()).find("Changed") != std::string::npos; }, "title");
}

TEST_P(Conformance, ActivationMovesFromOneWindowToTheOther) {
  RecordingSink first, second;
  const auto a = show(first, {100, 100, 300, 200}), b = show(second, {500, 100, 300, 200});
  a->activate();
  expectSoon([&] { return first.active && !second.active; }, "the first is active");
  b->activate();
  expectSoon([&] { return second.active && !first.active; }, "the second is active");
}

TEST_P(Conformance, MinimisingAndRestoringIsDoneAndReported) {
  RecordingSink sink;
  const auto surface = show(sink, {100, 100, 300, 200});
  surface->setMinimised(true);
  expectSoon([&] { return sink.minimised && machine().isMinimised(surface->nativeHandle()); }, "minimised");
  surface->setMinimised(false);
  expectSoon([&] { return !sink.minimised && !machine().isMinimised(surface->nativeHandle()); }, "restored");
  EXPECT_EQ(machine().frameOf(surface->nativeHandle()), Rect(100, 100, 300, 200));
}

TEST_P(Conformance, ZoomingFillsTheScreenAndComesBack) {
  RecordingSink sink;
  const auto surface = show(sink, {100, 100, 300, 200});
  const Rect screen = backend().windows().screens().front().visibleFrame;
  surface->setZoomed(true);
  expectSoon([&] { return sink.zoomed && !sink.frames.empty() && sink.frames.back() == screen; }, "zoomed");
  surface->setZoomed(false);
  expectSoon([&] { return !sink.zoomed && !sink.frames.empty() && sink.frames.back() == Rect(100, 100, 300, 200); },
             "restored");
}

TEST_P(Conformance, TextCrossesTheClipboardBothWays) {
  const std::string type = "text/plain;charset=utf-8", text = "한글 and e\u0301 😀";
  backend().clipboard().write({{type, text}});
  EXPECT_EQ(machine().pasteElsewhere(), text);
  EXPECT_EQ(backend().clipboard().read(type), text);
  machine().copyElsewhere("다른 앱");
  expectSoon([&] { return backend().clipboard().read(type) == "다른 앱"; }, "what the other application copied");
  EXPECT_EQ(backend().clipboard().types().front(), type);
}

TEST_P(Conformance, ALayoutCoversItsTextAndItsCaretsGoForward) {
  struct Row {
    const char* name;
    std::u16string text;
    TextOptions options;
    std::size_t lines;  // 0: more than one
  };
  const std::u16string korean = u"가나다라 마바사 아자차카 타파하 한국어 문장";
  const Row rows[] = {
      {"empty", u"", {}, 1},
      {"one line", u"Hello 세계", {}, 1},
      {"newline at the end", u"a\n", {}, 2},
      {"three paragraphs", u"a\n\nb", {}, 3},
      {"wrapped by words", korean, {.width = 80, .wrapping = Wrapping::words}, 0},
      {"wrapped by characters", korean, {.width = 80, .wrapping = Wrapping::characters}, 0},
      {"a word longer than the line", std::u16string(60, u'W'), {.width = 90, .wrapping = Wrapping::words}, 0},
      {"surrogates and combining marks", u"a😀e\u0301b", {}, 1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const TextRun run{0, row.text.size(), {}, {}, false};
    const auto layout = backend().text().layout(row.text, {&run, 1}, row.options);
    const auto lines = layout->lines();
    ASSERT_FALSE(lines.empty());
    if (row.lines)
      EXPECT_EQ(lines.size(), row.lines);
    else
      EXPECT_GT(lines.size(), 1U);
    std::size_t at = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      EXPECT_EQ(lines[i].start, at);
      EXPECT_GT(lines[i].height, 0);
      const std::size_t end = lines[i].start + lines[i].length;
      for (std::size_t offset = lines[i].start; offset < end; ++offset) {
        const double x = layout->caretX(i, offset);
        EXPECT_LE(x, layout->caretX(i, offset + 1));
        const std::size_t found = layout->offsetAt(i, x);
        EXPECT_EQ(layout->caretX(i, found), x);
      }
      at = end + (end < row.text.size() && row.text[end] == u'\n' ? 1 : 0);
    }
    EXPECT_EQ(at, row.text.size());
  }
}

TEST_P(Conformance, AnElidedLineFitsItsWidth) {
  const std::u16string text = u"A title that is much too long for its place";
  const TextRun run{0, text.size(), {}, {}, false};
  const auto whole = backend().text().layout(text, {&run, 1}, {});
  const auto layout = backend().text().layout(text, {&run, 1}, {.width = 100, .elided = true});
  ASSERT_EQ(layout->lines().size(), 1U);
  EXPECT_GT(whole->size().width, 100);
  EXPECT_LE(layout->size().width, 100);
  EXPECT_GT(layout->size().width, 50);
}

TEST_P(Conformance, AWaitEndsAtItsDeadline) {
  const double before = loop().now();
  machine().spin([&] { return loop().now() >= before + 0.05; });
  EXPECT_GE(loop().now(), before + 0.05);
  EXPECT_LT(loop().now(), before + 1);
}

TEST_P(Conformance, AReadableDescriptorIsDelivered) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  std::string got;
  const auto watch = loop().watch(ends[0], [&] {
    char byte = 0;
    if (read(ends[0], &byte, 1) == 1) got += byte;
  });
  std::thread writer([&] { ASSERT_EQ(write(ends[1], "ab", 2), 2); });
  expectSoon([&] { return got == "ab"; }, "both bytes");
  writer.join();
  loop().unwatch(watch);
  ASSERT_EQ(write(ends[1], "c", 1), 1);
  machine().spin([end = loop().now() + 0.05, this] { return loop().now() >= end; });
  EXPECT_EQ(got, "ab") << "nothing comes after unwatch";
  close(ends[0]);
  close(ends[1]);
}

TEST_P(Conformance, ANotificationFromAnotherProcessArrivesOnlyWhenObserved) {
  std::vector<std::pair<std::string, platform::Dictionary>> got;
  auto* broadcast = backend().broadcast();
  ASSERT_NE(broadcast, nullptr);
  broadcast->setReceiver([&](const auto& name, const auto&, const auto& info) { got.emplace_back(name, info); });
  broadcast->observe("mirelo_one");
  machine().postElsewhere("mirelo_other", {{"number", "1"}});
  machine().postElsewhere("mirelo_one", {{"number", "둘"}});
  expectSoon([&] { return !got.empty(); }, "the observed one");
  ASSERT_EQ(got.size(), 1U);
  EXPECT_EQ(got[0].first, "mirelo_one");
  EXPECT_EQ(got[0].second, (platform::Dictionary{{"number", "둘"}}));
  broadcast->setReceiver(nullptr);
}

TEST(DesktopBus, WhatIsTooLargeTooDeepOrHasNoUtf8IsNotPosted) {
  auto* broadcast = desktopMachine().backend().broadcast();
  platform::Value deep("end");
  for (int depth = 0; depth < 40; ++depth) deep = platform::Value(platform::Value::Array{deep});
  EXPECT_FALSE(broadcast->post("mirelo_bad", "", {{"large", std::string(2 << 20, 'x')}}));
  EXPECT_FALSE(broadcast->post("mirelo_bad", "", {{"deep", deep}}));
  EXPECT_FALSE(broadcast->post("mirelo_bad", "", {{"bytes", "\xff\xfe"}}));
  EXPECT_TRUE(broadcast->post("mirelo_good", "", {{"text", "한글"}, {"list", platform::Value::Array{1, true}}}));
}

}  // namespace

}  // namespace desktop_tests
