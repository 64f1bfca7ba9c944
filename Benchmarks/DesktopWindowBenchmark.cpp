// Windows on the real desktop beside those of a bare Qt program, in turn on one event loop. Prints a line for each
// pair: what was measured, ours and the bare one's in nanoseconds.
//   desktop-window-benchmark ROUNDS

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Backends/Desktop/DesktopBackend.h"
#include "Benchmarks/Peers/BareDesktop.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"
#include "Tests/VeltrikAppKit/TestHost.h"
#include "VeltrikAppKit/VeltrikAppKit.h"

namespace {

using Clock = std::chrono::steady_clock;
using platform::NSWindow;
using platform::Rect;

constexpr int kScreenHeight = 800;
constexpr int kColumns = 10, kWindows = 50, kTileWidth = 120, kTileHeight = 70;
constexpr int kResizes = 1000;
constexpr double kPause = 0.005;  // seconds in which what went before is dealt with
constexpr double kLimit = 10;     // seconds

class PaintedView final : public platform::NSView {
 public:
  explicit PaintedView(bare::Happened painted) : painted_(std::move(painted)) {}
  bool acceptsFirstResponder() override { return true; }
  void draw(platform::port::Canvas&) override {
    if (painted_) painted_();
  }

 private:
  bare::Happened painted_;
};

/// Turns the loop until `happened`; ends the program where it doesn't.
void await(const char* what, const std::function<bool()>& happened) {
  auto& loop = platform::RunLoop::main();
  if (loop.runUntil(happened, loop.now() + kLimit)) return;
  std::fprintf(stderr, "not in time: %s\n", what);
  std::exit(1);
}

/// Nanoseconds from `act` until `happened`, which what it sets off makes true.
long long timed(const char* what, const std::function<void()>& act, const bool& happened) {
  const auto begun = Clock::now();
  act();
  await(what, [&] { return happened; });
  return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - begun).count();
}

void print(const char* what, long long ours, long long bare) {
  std::printf("%s %lld %lld\n", what, ours, bare);
}

/// A window of the messenger's, bound and shown; gone with this.
class HostedWindow {
 public:
  HostedWindow(veltrik::VeltrikAppKit& appKit, const std::string& id, const Rect& frame, bare::Happened painted)
      : HostedWindow(appKit, std::make_shared<veltrik::TestHostWindow>(id), frame, std::move(painted)) {}
  HostedWindow(veltrik::VeltrikAppKit& appKit, const std::shared_ptr<veltrik::TestHostWindow>& host, const Rect& frame,
               bare::Happened painted)
      : host_(host) {
    constexpr unsigned kStyle = platform::StyleMask::kTitled | platform::StyleMask::kResizable;
    host_->bounds = {0, 0, frame.width, frame.height};
    appKit.bindNSWindowWithUIWindowID(host_->id, [host](const auto& helper) {
      host->helper = helper;
      helper->setDelegate(host);
    });
    native_ = NSWindow::make(frame, kStyle);
    native_->setFrame(frame, false);
    native_->setContentView(std::make_shared<PaintedView>(std::move(painted)));
    native_->setTitle(host_->id);
    native_->makeKeyAndOrderFront(nullptr);
  }
  ~HostedWindow() { native_->close(); }
  HostedWindow(const HostedWindow&) = delete;
  HostedWindow& operator=(const HostedWindow&) = delete;

  NSWindow& native() { return *native_; }
  const std::shared_ptr<veltrik::VeltrikAppKitWindowHelperProtocol>& helper() const { return host_->helper; }

 private:
  std::shared_ptr<veltrik::TestHostWindow> host_;
  std::shared_ptr<NSWindow> native_;
};

struct Place {
  int x, y;
};

/// The top left corner of a tile, ours in the upper half of the screen, the bare ones in the lower.
Place tile(int number, bool ours) {
  return {number % kColumns * kTileWidth, number / kColumns * kTileHeight + (ours ? 0 : kScreenHeight / 2)};
}

void measureMoves(veltrik::VeltrikAppKit& appKit, int rounds) {
  bool happened = false;
  int painted = 0;
  int awaited = 0;
  const auto count = [&] { ++painted; };
  const auto note = [&](int x) { happened = happened || x == awaited; };
  std::vector<std::unique_ptr<HostedWindow>> ours;
  std::vector<std::unique_ptr<bare::Window>> bares;
  for (int number = 0; number < kWindows; ++number) {
    const Place above = tile(number, true), below = tile(number, false);
    const Rect frame(above.x, kScreenHeight - above.y - kTileHeight, kTileWidth, kTileHeight);
    ours.push_back(std::make_unique<HostedWindow>(appKit, "tile " + std::to_string(number), frame, count));
    bares.push_back(std::make_unique<bare::Window>(below.x, below.y, kTileWidth, kTileHeight));
    bares.back()->onMoved(note);
    bares.back()->onPainted(count);
    bares.back()->show();
  }
  await("all tiles are painted", [&] { return painted >= 2 * kWindows; });
  // The last monitor: what it sees went through all others.
  platform::NSApplication::shared().addLocalMonitor(platform::kAnyEventMask, [&](const platform::EventPointer& event) {
    if (event->type == platform::EventType::mouseMoved)
      note(static_cast<int>(std::lround(event->locationOnScreen.value_or(platform::Point()).x)));
    return event;
  });
  const auto moveIn = [&](int number, bool isOurs) {
    const Place place = tile(number % kWindows, isOurs);
    // A move from elsewhere may count as entering alone.
    bare::movePointer(place.x + 40, place.y + 50);
    platform::RunLoop::main().runUntil([] { return false; }, platform::RunLoop::main().now() + kPause);
    happened = false;
    awaited = place.x + 43;
    return timed(
        isOurs ? "a move over ours" : "a move over a bare one", [&] { bare::movePointer(awaited, place.y + 50); },
        happened);
  };
  for (int number = 0; number < rounds * kWindows; ++number) {
    const long long mine = moveIn(number, true);
    print("move", mine, moveIn(number, false));
  }
}

void measurePopovers(veltrik::VeltrikAppKit& appKit, int rounds) {
  const Rect frame(100, 200, 500, 400);
  bool happened = false;
  const auto note = [&] { happened = true; };
  HostedWindow parent(appKit, "parent", frame, note);
  await("the parent is painted", [&] { return happened; });
  bare::Window bareParent(650, 200, 500, 400);
  bareParent.onPainted(note);
  happened = false;
  timed(
      "the bare parent is painted", [&] { bareParent.show(); }, happened);
  for (int round = 0; round < rounds * 4; ++round) {
    const auto host = std::make_shared<veltrik::TestHostWindow>("popover");
    host->popover = veltrik::PopoverWindowDescription{Rect{50, 60, 200, 120}, parent.helper(), std::nullopt};
    std::unique_ptr<HostedWindow> popover;
    happened = false;
    const long long mine = timed(
        "the popover is painted",
        [&] {
          popover = std::make_unique<HostedWindow>(appKit, host, Rect{0, 0, 200, 120}, note);
        },
        happened);
    popover.reset();
    std::unique_ptr<bare::Window> bare;
    happened = false;
    const auto show = [&] {
      bare = std::make_unique<bare::Window>(700, 260, 200, 120, &bareParent);
      bare->onPainted(note);
      bare->show();
    };
    print("popover", mine, timed("the bare popover is painted", show, happened));
  }
}

/// Until the last of the resizes is on the bus and painted.
void measureResizes(veltrik::VeltrikAppKit& appKit, int rounds) {
  bool painted = false;
  HostedWindow ours(appKit, "resized", {100, 300, 300, 200}, [&] { painted = true; });
  await("the window is painted", [&] { return painted; });
  bare::Window bare(650, 200, 300, 200);
  bare.onPainted([&] { painted = true; });
  painted = false;
  timed(
      "the bare window is painted", [&] { bare.show(); }, painted);
  for (int round = 0; round < rounds; ++round) {
    const auto each = [](int number) { return 200 + number % 250; };
    painted = false;
    const long long mine = timed(
        "the resizes are painted",
        [&] {
          for (int number = 0; number < kResizes; ++number)
            ours.native().setFrame(Rect(100, 300, each(number), each(number + 1)), true);
          painted = false;
        },
        painted);
    painted = false;
    const long long theirs = timed(
        "the bare resizes are painted",
        [&] {
          for (int number = 0; number < kResizes; ++number) {
            bare.resize(each(number), each(number + 1));
            bare::publish(each(number), each(number + 1));
          }
          painted = false;
        },
        painted);
    print("resizes", mine, theirs);
  }
}

}  // namespace

int main(int argc, char** argv) {
  platform::setLogSink([](const std::string&) {});
  desktop::DesktopBackend backend;
  platform::Session session(backend);
  const auto appKit = veltrik::VeltrikAppKit::make();
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 10;
  measureMoves(*appKit, rounds);
  measurePopovers(*appKit, rounds);
  measureResizes(*appKit, rounds);
  return 0;
}
