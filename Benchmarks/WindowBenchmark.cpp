// What the model itself costs, on the headless back end: events through monitors and dispatch, binding, lookup.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "Backends/Headless/HeadlessBackend.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/Session.h"
#include "VeltrikAppKit/VeltrikAppKit.h"

namespace {

using platform::NSApplication;
using platform::NSWindow;

constexpr unsigned kStyle = platform::StyleMask::kTitled | platform::StyleMask::kClosable |
                            platform::StyleMask::kMiniaturizable | platform::StyleMask::kResizable;

/// A plain host view that takes keys and does nothing with them.
class KeyView final : public platform::NSView {
 public:
  bool acceptsFirstResponder() override { return true; }
  void keyDown(const platform::EventPointer&) override { ++keys; }
  std::size_t keys = 0;
};

/// A headless desktop with the plug-in and as many bound, shown windows as asked for.
class Desktop {
 public:
  Desktop() : session_(backend_), appKit_(veltrik::VeltrikAppKit::make()) {}

  std::shared_ptr<NSWindow> bindWindow() {
    const std::string identifier = "window-" + std::to_string(++bound_);
    appKit_->bindNSWindowWithUIWindowID(identifier, [this](const auto& helper) { helpers_.push_back(helper); });
    auto window = NSWindow::make({100, 100, 400, 300}, kStyle);
    auto view = std::make_shared<KeyView>();
    window->setContentView(view);
    window->setTitle(identifier);
    window->makeKeyAndOrderFront(nullptr);
    window->makeFirstResponder(view);
    return window;
  }
  void bindWindows(std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) bindWindow();
    backend_.settle();
  }
  void settle() { backend_.settle(); }

 private:
  headless::HeadlessBackend backend_;
  platform::Session session_;
  std::shared_ptr<veltrik::VeltrikAppKit> appKit_;
  std::vector<std::shared_ptr<veltrik::VeltrikAppKitWindowHelperProtocol>> helpers_;
  int bound_ = 0;
};

/// A plain key from the application's queue through every monitor (the main window's and one of the host's for all
/// events) to the first responder.
void keyEventThroughMonitors(benchmark::State& state) {
  Desktop desktop;
  desktop.bindWindows(state.range(0));
  auto& application = NSApplication::shared();
  application.addLocalMonitor(platform::kAnyEventMask, [](const platform::EventPointer& event) { return event; });
  platform::NSEvent key;
  key.type = platform::EventType::keyDown;
  key.keyCode = platform::KeyCode::kEscape;  // what the key guard lets through to a host's own view
  key.modifierFlags = platform::ModifierFlag::kPlainKey;
  const auto event = std::make_shared<const platform::NSEvent>(key);
  const auto view = std::static_pointer_cast<KeyView>(application.keyWindow()->firstResponder());
  for (auto _ : state) application.sendEvent(event);
  if (view->keys != static_cast<std::size_t>(state.iterations())) state.SkipWithError("keys were lost on the way");
}
BENCHMARK(keyEventThroughMonitors)->Arg(1)->Arg(50);

/// Making, binding and showing one window beside `range` others.
void bindWindow(benchmark::State& state) {
  Desktop desktop;
  desktop.bindWindows(state.range(0));
  for (auto _ : state) {
    const auto window = desktop.bindWindow();
    state.PauseTiming();
    window->close();
    desktop.settle();
    state.ResumeTiming();
  }
}
BENCHMARK(bindWindow)->Arg(0)->Arg(999)->Iterations(300);

void windowLookup(benchmark::State& state) {
  Desktop desktop;
  desktop.bindWindows(state.range(0));
  auto& application = NSApplication::shared();
  const auto number = application.keyWindow()->windowNumber();
  for (auto _ : state) benchmark::DoNotOptimize(application.windowWithNumber(number));
}
BENCHMARK(windowLookup)->Arg(10)->Arg(1000);

}  // namespace

int main(int argc, char** argv) {
  platform::setLogSink([](const std::string&) {});
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
