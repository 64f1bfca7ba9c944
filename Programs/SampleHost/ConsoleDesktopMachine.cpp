#include <fmt/format.h>

#include "Platform/AppKit/NSMenu.h"
#include "Platform/AppKit/NSPasteboard.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/Foundation/DistributedNotificationCenter.h"
#include "Platform/Foundation/ProcessInfo.h"
#include "Platform/Foundation/RunLoop.h"
#include "Programs/SampleHost/ConsoleTargets.h"

namespace samplehost {

using platform::Dictionary;
using platform::NSApplication;
using platform::Rect;
using platform::Value;
using platform::port::ScreenInfo;
using std::optional;
using std::string;

/// `{"frame","visibleFrame","scale"}`; the visible frame is the whole one and the scale 1 unless told.
template <>
struct Codec<ScreenInfo> {
  static ScreenInfo decode(const Value& value) {
    ScreenInfo screen;
    const Dictionary members = Codec<Dictionary>::decode(value);
    const auto member = [&](const char* name) {
      const auto found = members.find(name);
      return found == members.end() ? Value() : found->second;
    };
    screen.frame = Codec<Rect>::decode(member("frame"));
    screen.visibleFrame = Codec<optional<Rect>>::decode(member("visibleFrame")).value_or(screen.frame);
    screen.scale = Codec<optional<double>>::decode(member("scale")).value_or(1);
    return screen;
  }
  static Value encode(const ScreenInfo& screen) {
    return Dictionary{{"frame", Codec<Rect>::encode(screen.frame)},
                      {"visibleFrame", Codec<Rect>::encode(screen.visibleFrame)},
                      {"scale", screen.scale}};
  }
};

namespace {

Value describe(const std::shared_ptr<platform::NSMenu>& menu) {
  if (!menu) return {};
  Value::Array items;
  for (const auto& item : menu->items())
    items.push_back(Dictionary{{"title", item->title()},
                               {"action", item->action()},
                               {"keyEquivalent", item->keyEquivalent()},
                               {"tag", item->tag()}});
  return Dictionary{{"title", menu->title()}, {"autoenablesItems", menu->autoenablesItems()}, {"items", items}};
}

bool chooseDockItem(ConsoleContext& /*context*/, std::uint32_t index) {
  const auto menu = NSApplication::shared().dockMenu();
  if (!menu || index >= menu->items().size()) throw RequestError(fmt::format("the dock menu has no item {}", index));
  return menu->items()[index]->perform();
}

void observe(ConsoleContext& context, const string& name) {
  platform::DistributedNotificationCenter::defaultCenter().addObserver(
      &context.host, name, "", platform::DistributedNotificationCenter::kSuspensionDeliverImmediately,
      [&events = context.host.events()](const string& posted, const Dictionary& userInfo) {
        events.emit({"notification", "desktop", {posted, userInfo}});
      });
}

void addApplication(ConsoleCalls& calls) {
  calls.add("isActive", [](ConsoleContext&) { return NSApplication::shared().isActive(); });
  calls.add("setPresentationOptions",
            [](ConsoleContext&, std::uint32_t options) { NSApplication::shared().setPresentationOptions(options); });
  calls.add("setSystemVersion",
            [](ConsoleContext&, std::int32_t major) { platform::setOperatingSystemVersionForTesting(major); });
  calls.add("reopen", [](ConsoleContext&) { return NSApplication::shared().reopen(); });
  calls.add("dockMenu", [](ConsoleContext&) { return describe(NSApplication::shared().dockMenu()); });
  calls.add("chooseDockItem", chooseDockItem);
  calls.add("quit", [](ConsoleContext&) { NSApplication::shared().stop(); });
}

void addNotificationsAndClipboard(ConsoleCalls& calls) {
  calls.add("post", [](ConsoleContext&, const string& name, const Dictionary& userInfo) {
    platform::DistributedNotificationCenter::defaultCenter().post(
        name, "", userInfo, platform::DistributedNotificationCenter::kDeliverImmediately);
  });
  calls.add("observe", observe);
  calls.add("receive", [](ConsoleContext& c, const string& name, const Dictionary& userInfo) {
    c.headless().broadcast()->receiveFromOtherProcess({name, "", userInfo});
  });
  calls.add("clipboard", [](ConsoleContext&) { return platform::NSPasteboard::general().string(); });
  calls.add("setClipboard",
            [](ConsoleContext&, const string& text) { platform::NSPasteboard::general().setString(text); });
}

void addTimeAndScreens(ConsoleCalls& calls) {
  calls.add("settle", [](ConsoleContext&) { platform::RunLoop::main().runDue(); });
  calls.add("advance", [](ConsoleContext& c, double seconds) {
    if (!(seconds >= 0 && seconds <= 86400)) throw RequestError("time advances by 0 to 86400 seconds");
    c.headless().advance(seconds);
  });
  calls.add("now", [](ConsoleContext&) { return platform::RunLoop::main().now(); });
  calls.add("screens", [](ConsoleContext&) { return platform::NSScreen::screens(); });
  calls.add("setScreens", [](ConsoleContext& c, const std::vector<ScreenInfo>& screens) {
    if (screens.empty()) throw RequestError("a desktop has one screen at least");
    c.headless().setScreens(screens);
  });
  calls.add("journal", [](ConsoleContext& c) { return c.headless().journal().take(); });
}

}  // namespace

void addMachineCalls(ConsoleCalls& calls) {
  addApplication(calls);
  addNotificationsAndClipboard(calls);
  addTimeAndScreens(calls);
}

}  // namespace samplehost
