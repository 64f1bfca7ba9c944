#include <fmt/format.h>

#include "Programs/SampleHost/ConsoleTargets.h"
#include "Programs/SampleHost/PngFile.h"
#include "Programs/SampleHost/WindowReference.h"
#include "Programs/SampleHost/WindowState.h"

namespace samplehost {

using platform::NSApplication;
using platform::NSWindow;
using platform::Rect;
using platform::Value;
using std::optional;
using std::string;

namespace {

NSWindow& at(ConsoleContext& context, const WindowReference& reference) {
  // The application keeps it while it isn't closed.
  return *windowAt(context.host.layer(), reference);
}

Value numbers(const auto& windows) {
  Value::Array result;
  for (const auto& window : windows) result.push_back(window->windowNumber());
  return result;
}

void takeScreenshot(ConsoleContext& context, const WindowReference& reference, const string& path) {
  const auto picture = at(context, reference).snapshot();
  if (!picture) throw RequestError("this machine can't tell what the window shows");
  writePng(*picture, path);
}

void addMaking(ConsoleCalls& calls) {
  calls.add("makeWindow", [](ConsoleContext& c, string identifier, Rect frame, optional<string> title,
                             optional<std::uint32_t> styleMask) {
    return c.host.layer()
        .makeWindow(identifier, frame, title, styleMask.value_or(CompatibilityLayer::kStyle))
        ->windowNumber();
  });
  calls.add("setTitle", [](ConsoleContext& c, WindowReference w, string title) { at(c, w).setTitle(title); });
  calls.add("orderFront", [](ConsoleContext& c, WindowReference w) { at(c, w).makeKeyAndOrderFront(nullptr); });
  calls.add("orderOut", [](ConsoleContext& c, WindowReference w) { at(c, w).orderOut(); });
  calls.add("performClose", [](ConsoleContext& c, WindowReference w) { at(c, w).performClose(); });
  calls.add("close", [](ConsoleContext& c, WindowReference w) { at(c, w).close(); });
}

void addChanging(ConsoleCalls& calls) {
  calls.add("setFrame", [](ConsoleContext& c, WindowReference w, Rect frame) { at(c, w).setFrame(frame, true); });
  calls.add("setLevel", [](ConsoleContext& c, WindowReference w, std::int32_t level) { at(c, w).setLevel(level); });
  calls.add("makeKey", [](ConsoleContext& c, WindowReference w) { at(c, w).makeKey(); });
  calls.add("makeMain", [](ConsoleContext& c, WindowReference w) { at(c, w).makeMain(); });
  calls.add("deminiaturize", [](ConsoleContext& c, WindowReference w) { at(c, w).deminiaturize(); });
  calls.add("addChildWindow", [](ConsoleContext& c, WindowReference parent, WindowReference child) {
    at(c, parent).addChildWindow(windowAt(c.host.layer(), child), platform::WindowOrdering::above);
  });
  calls.add("focusHostView", [](ConsoleContext& c, string identifier) {
    const auto view = c.host.layer().hostView(identifier);
    return at(c, {identifier}).makeFirstResponder(view);
  });
}

void addReading(ConsoleCalls& calls) {
  calls.add("windows", [](ConsoleContext&) { return numbers(NSApplication::shared().windows()); });
  calls.add("orderedWindows", [](ConsoleContext&) { return numbers(NSApplication::shared().orderedWindows()); });
  calls.add("read", [](ConsoleContext& c, WindowReference w, optional<string> field) {
    return field ? windowField(at(c, w), *field) : Value(windowState(at(c, w)));
  });
  calls.add("screenshot", takeScreenshot);
}

}  // namespace

void addWindowCalls(ConsoleCalls& calls) {
  addMaking(calls);
  addChanging(calls);
  addReading(calls);
}

}  // namespace samplehost
