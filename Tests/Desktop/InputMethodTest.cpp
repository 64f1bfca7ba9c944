#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "Tests/Desktop/InputFixture.h"

namespace desktop_tests {

using platform::port::SurfaceState;

namespace {

/// What the desktop was started with.
bool isFcitx() {
  return std::string_view(std::getenv("QT_IM_MODULE")) == "fcitx";
}

class DesktopInputMethod : public DesktopInput {
 protected:
  DesktopInputMethod() {
    sink_.hasText = true;
    sink_.caret = {260, 300, 1, 18};
    surface_->textInputChanged(false);
    outside("xset r off");
    // The input method takes some time to notice a new window; from its first answer on it is there.
    EXPECT_TRUE(soon([&] {
      if (sink_.marked.empty()) outside("xdotool key x");
      return !sink_.marked.empty() && !sink_.keys.back().down;
    }));
    surface_->textInputChanged(true);
    outside("xdotool key space");
    EXPECT_TRUE(soon([&] { return sink_.text.ends_with(u' '); }));
    sink_.keys.clear();
    sink_.left.clear();
    sink_.text.clear();
    sink_.marked.clear();
  }
  ~DesktopInputMethod() override { outside("xset r on"); }

  platform::Rect shown_ = kFrame;

  /// The input method's daemon that was started with this desktop.
  static std::string daemon() {
    return outside(fmt::format("pgrep -P {} -x {}", getppid(), isFcitx() ? "fcitx5" : "ibus-daemon"));
  }
  /// The process that composes.
  static std::string engine() {
    return isFcitx() ? daemon() : outside("pgrep -P " + daemon() + " -f ibus-engine-hangul");
  }
};

TEST_F(DesktopInputMethod, HangulComposesAndIsCommitted) {
  outside("xdotool key --delay 10 g k s");
  EXPECT_TRUE(soon([&] { return sink_.marked == u"한"; }));
  EXPECT_EQ(sink_.text, u"");
  outside("xdotool key --delay 10 r m f space");
  EXPECT_TRUE(soon([&] { return sink_.text == u"한글 "; }));
  EXPECT_EQ(std::count_if(sink_.keys.begin(), sink_.keys.end(), [](const auto& key) { return key.down; }), 7)
      << "every key is shown to the model once, though the input method takes it: " << sink_.typed();
}

TEST_F(DesktopInputMethod, AnEndedCompositionIsNotCommittedOnceMore) {
  outside("xdotool key --delay 10 g k s");
  ASSERT_TRUE(soon([&] { return sink_.marked == u"한"; }));
  sink_.insert(sink_.marked);
  surface_->textInputChanged(true);
  outside("xdotool key --delay 10 r m f space");
  EXPECT_TRUE(soon([&] { return sink_.text.ends_with(u' '); }));
  EXPECT_EQ(sink_.text, u"한글 ");
}

/// What is told to the input method, read on its own bus.
class ToldCaret {
 public:
  ToldCaret() {
    const std::string bus = isFcitx() ? "--session" : "--address \"$(ibus address)\"";
    pipe_ = popen(fmt::format("exec dbus-monitor {} \"member='{}'\" 2>&1", bus, member()).c_str(), "r");
    watch_ = loop().watch(fileno(pipe_), [this] {
      char buffer[4096];
      const ssize_t count = read(fileno(pipe_), buffer, sizeof buffer);
      if (count > 0) output_.append(buffer, static_cast<std::size_t>(count));
    });
  }
  ~ToldCaret() {
    loop().unwatch(watch_);
    outside(fmt::format("pkill -P {} -x dbus-monitor", getpid()));
    pclose(pipe_);
  }
  ToldCaret(const ToldCaret&) = delete;
  ToldCaret& operator=(const ToldCaret&) = delete;

  /// The newest rectangle: x, y, width and height, from the top left of the root window.
  std::vector<int> newest() const {
    const auto at = output_.rfind("member=" + member());
    std::vector<int> numbers;
    if (at == std::string::npos) return numbers;
    std::istringstream words(output_.substr(at));
    for (std::string word; words >> word;) {
      if (word != "int32") continue;
      words >> word;
      numbers.push_back(std::stoi(word));
    }
    return numbers;
  }

 private:
  static std::string member() { return isFcitx() ? "SetCursorRect" : "SetCursorLocation"; }
  static platform::port::LoopDriver& loop() { return desktopMachine().backend().loop(); }

  FILE* pipe_ = nullptr;
  std::uint64_t watch_ = 0;
  std::string output_;
};

TEST_F(DesktopInputMethod, TheCandidatesPlaceIsTheCaretsInPixelsOfTheRootWindow) {
  const ToldCaret told;
  // The caret's place in root pixels, by the window's real place.
  const auto expected = [&] {
    const auto frame = desktopMachine().frameOf(surface_->nativeHandle());
    const double height = desktopMachine().backend().windows().screens().front().frame.height;
    const double fromLeft = sink_.caret.x - shown_.x, fromBottom = sink_.caret.y - shown_.y;
    const auto pixels = [](double points) { return static_cast<int>(std::lround(points * scale())); };
    return std::vector<int>{pixels(frame.x + fromLeft), pixels(height - frame.y - fromBottom - sink_.caret.height),
                            pixels(sink_.caret.width), pixels(sink_.caret.height)};
  };
  SurfaceState state;
  state.visible = true;
  state.title = "Input";
  struct Row {
    const char* name;
    platform::Rect frame, caret;
  };
  for (const Row& row : {Row{"in the middle", kFrame, {260, 300, 1, 18}}, Row{"caret moved", kFrame, {331, 262, 2, 20}},
                         Row{"window moved", {90, 60, 400, 300}, {221, 122, 2, 20}},
                         Row{"window moved and resized", {30, 20, 500, 310}, {161, 80, 2, 20}}}) {
    SCOPED_TRACE(row.name);
    const bool moves = row.frame != shown_;
    sink_.caret = row.caret;
    state.frame = shown_ = row.frame;
    if (moves)
      surface_->apply(state);
    else
      surface_->textInputChanged(false);
    EXPECT_TRUE(soon([&] {
      // Nobody listened yet, and what doesn't change may not be told again.
      for (const double away : {1, -1}) {
        if (!told.newest().empty()) break;
        sink_.caret.x += away;
        surface_->textInputChanged(false);
      }
      return told.newest() == expected();
    })) << testing::PrintToString(told.newest());
  }
}

TEST_F(DesktopInputMethod, AHungInputMethodDelaysOneKeyAndDoublesNone) {
  outside("xdotool key --delay 10 g k");
  ASSERT_TRUE(soon([&] { return sink_.marked == u"하"; }));
  const std::string hung = engine();
  outside("kill -STOP " + hung);
  const double before = desktopMachine().backend().loop().now();
  outside("xdotool key --delay 10 s a b");
  EXPECT_TRUE(soon([&] { return sink_.text == u"하sab"; }));
  EXPECT_LT(desktopMachine().backend().loop().now() - before, 2);
  outside("kill -CONT " + hung);
  // It is back as soon as it composes again.
  EXPECT_TRUE(soon([&] {
    if (sink_.marked.empty()) outside("xdotool key r");
    return sink_.marked == u"ㄱ";
  }));
  // Presses before it was back, and more than one after.
  std::erase_if(sink_.text, [](char16_t each) { return each == u'r' || each == u'ㄱ' || each == u'ㄲ'; });
  EXPECT_EQ(sink_.text, u"하sab");
}

/// Runs last of its kind: the input method may not come back.
TEST_F(DesktopInputMethod, ZAKeyInFlightActsWhenTheInputMethodIsKilled) {
  const std::string doomed = daemon();
  outside("xdotool key --delay 10 g k");
  ASSERT_TRUE(soon([&] { return sink_.marked == u"하"; }));
  outside("kill -STOP " + doomed);
  outside("xdotool key a");
  EXPECT_EQ(sink_.text, u"");
  outside("kill -KILL " + doomed);
  // The bus starts fcitx once more, which may compose the next letters already.
  outside(isFcitx() ? "xdotool key space" : "xdotool key --delay 30 b c space");
  EXPECT_TRUE(soon([&] { return sink_.text == (isFcitx() ? u"하a " : u"하abc "); }))
      << testing::PrintToString(sink_.text);
}

}  // namespace

}  // namespace desktop_tests
