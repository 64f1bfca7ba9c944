#include <fmt/format.h>

#include "Programs/SampleHost/ConsoleTargets.h"

namespace samplehost {

using platform::Dictionary;
using platform::Value;
using std::string;
using veltrik::VeltrikStatusBarItemProtocol;

namespace {

VeltrikStatusBarItemProtocol& item(ConsoleContext& context) {
  const auto found = context.host.statusItems().find(context.identifier);
  if (found == context.host.statusItems().end())
    throw RequestError(fmt::format("there is no status bar item \"{}\"", context.identifier));
  return *found->second;
}

void addMenuItem(ConsoleContext& context, const string& title, std::int32_t tag, const string& keyCode) {
  item(context).addMenuItemWithTitle(
      title, tag, keyCode, [&events = context.host.events(), from = "status:" + context.identifier, title, tag] {
        events.emit({"menuItemHandler", from, {title, static_cast<std::int64_t>(tag)}});
      });
}

Value describe(const std::vector<platform::port::TrayMenuItem>& items) {
  Value::Array lines;
  for (const auto& each : items)
    lines.push_back(Dictionary{{"title", each.title},
                               {"separator", each.isSeparator},
                               {"enabled", each.isEnabled},
                               {"visible", each.isVisible},
                               {"keyEquivalent", each.keyEquivalent}});
  return lines;
}

Value statusBar(ConsoleContext& context) {
  Value::Array items;
  for (const auto* shown : context.headless().tray()->items())
    items.push_back(
        Dictionary{{"pictures", static_cast<std::int64_t>(shown->pictures.size())}, {"menu", describe(shown->menu)}});
  return items;
}

bool chooseStatusItem(ConsoleContext& context, std::uint32_t index, const string& title) {
  auto& tray = *context.headless().tray();
  if (index >= tray.items().size()) throw RequestError(fmt::format("the status bar has no item {}", index));
  return tray.choose(*tray.items()[index], title);
}

}  // namespace

std::int64_t createStatusItem(ConsoleContext& context, const string& imageName) {
  static std::int64_t last = 0;
  context.host.statusItems()[std::to_string(++last)] =
      context.host.appKit().createStatusBarItemWithImageName(imageName);
  return last;
}

ConsoleCalls statusCalls() {
  using S = VeltrikStatusBarItemProtocol;
  ConsoleCalls calls;
  calls.add("addMenuItemWithTitle", addMenuItem);
  calls.member("addSeparator", item, &S::addSeparator);
  calls.member("updateStatusBarItemWithImageName", item, &S::updateStatusBarItemWithImageName);
  calls.member("updateStatusBarItemEnabled", item, &S::updateStatusBarItemEnabled);
  calls.member("updateStatusBarItemHidden", item, &S::updateStatusBarItemHidden);
  return calls;
}

void addStatusBarCalls(ConsoleCalls& calls) {
  calls.add("statusBar", statusBar);
  calls.add("chooseStatusItem", chooseStatusItem);
}

}  // namespace samplehost
