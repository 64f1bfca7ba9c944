// Windows on the real desktop beside those of a bare Qt program, in turn on one event loop. Prints a line for each
// pair: what was measured, ours and the bare one's in nanoseconds.
//   desktop-window-benchmark ROUNDS

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>
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

/// Nanoseconds from `act` until `happened`, which what it sets off makes true.
long long timed(const std::function<void()>& act, const bool& happened) {
  const auto begun = Clock::now();
  act();
  platform::RunLoop::main().runUntil([&] { return happened; }, std::numeric_limits<double>::infinity());
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
  const auto count = [&] { ++painted; };
  std::vector<std::unique_ptr<HostedWindow>> ours;
  std::vector<std::unique_ptr<bare::Window>> bares;
  for (int number = 0; number < kWindows; ++number) {
    const Place above = tile(number, true), below = tile(number, false);
    const Rect frame(above.x, kScreenHeight - above.y - kTileHeight, kTileWidth, kTileHeight);
    ours.push_back(std::make_unique<HostedWindow>(appKit, "tile " + std::to_string(number), frame, count));
    bares.push_back(std::make_unique<bare::Window>(below.x, below.y, kTileWidth, kTileHeight));
    bares.back()->onMoved([&] { happened = true; });
    bares.back()->onPainted(count);
    bares.back()->show();
  }
  platform::RunLoop::main().runUntil([&] { return painted >= 2 * kWindows; }, std::numeric_limits<double>::infinity());
  // The last monitor: what it sees went through all others.
  platform::NSApplication::shared().addLocalMonitor(platform::kAnyEventMask, [&](const platform::EventPointer& event) {
    if (event->type == platform::EventType::mouseMoved) happened = true;
    return event;
  });
  const auto moveTo = [&](int number, bool isOurs) {
    happened = false;
    const Place place = tile(number % kWindows, isOurs);
    return timed([&] { bare::movePointer(place.x + 40, place.y + 50); }, happened);
  };
  for (int number = 0; number < rounds * kWindows; ++number) {
    const long long mine = moveTo(number, true);
    print("move", mine, moveTo(number, false));
  }
}

void measurePopovers(veltrik::VeltrikAppKit& appKit, int rounds) {
  const Rect frame(100, 200, 500, 400);
  bool happened = false;
  const auto note = [&] { happened = true; };
  HostedWindow parent(appKit, "parent", frame, note);
  platform::RunLoop::main().runUntil([&] { return happened; }, std::numeric_limits<double>::infinity());
  bare::Window bareParent(650, 200, 500, 400);
  bareParent.onPainted(note);
  happened = false;
  timed([&] { bareParent.show(); }, happened);
  for (int round = 0; round < rounds * 4; ++round) {
    const auto host = std::make_shared<veltrik::TestHostWindow>("popover");
    host->popover = veltrik::PopoverWindowDescription{Rect{50, 60, 200, 120}, parent.helper(), std::nullopt};
    std::unique_ptr<HostedWindow> popover;
    happened = false;
    const long long mine = timed(
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
    print("popover", mine, timed(show, happened));
  }
}

/// Until the last of the resizes is on the bus and painted.
void measureResizes(veltrik::VeltrikAppKit& appKit, int rounds) {
  bool painted = false;
  HostedWindow ours(appKit, "resized", {100, 300, 300, 200}, [&] { painted = true; });
  platform::RunLoop::main().runUntil([&] { return painted; }, std::numeric_limits<double>::infinity());
  bare::Window bare(650, 200, 300, 200);
  bare.onPainted([&] { painted = true; });
  painted = false;
  timed([&] { bare.show(); }, painted);
  for (int round = 0; round < rounds; ++round) {
    const auto each = [](int number) { return 200 + number % 250; };
    painted = false;
    const long long mine = timed(
        [&] {
          for (int number = 0; number < kResizes; ++number)
            ours.native().setFrame(Rect(100, 300, each(number), each(number + 1)), true);
          painted = false;
        },
        painted);
    painted = false;
    const long long theirs = timed(
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
