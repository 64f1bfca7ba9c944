#include "Programs/SampleHost/HostArguments.h"

#include <fmt/format.h>

namespace samplehost {

DelegateName Codec<DelegateName>::decode(const Value& value) {
  const std::string name = Codec<std::string>::decode(value);
  if (name != "host") throw RequestError(fmt::format("a delegate is \"host\" or null, not \"{}\"", name));
  return {};
}

platform::URL Codec<platform::URL>::decode(const Value& value) {
  const std::string text = Codec<std::string>::decode(value);
  if (text.starts_with('/')) return platform::URL::fileURL(text);
  const auto url = platform::URL::fromString(text);
  if (!url) throw RequestError(fmt::format("\"{}\" is neither an absolute path nor a URL", text));
  return *url;
}

Value Codec<platform::URL>::encode(const platform::URL& value) {
  return value.isFileURL() ? value.path() : value.absoluteString();
}

MenuItemAnswer Codec<MenuItemAnswer>::decode(const Value& value) {
  MenuItemAnswer item;
  for (const auto& [name, member] : Codec<platform::Dictionary>::decode(value)) {
    if (name == "title") {
      item.title = Codec<std::string>::decode(member);
    } else if (name == "state") {
      item.state = Codec<std::string>::decode(member);
    } else if (name == "separator") {
      item.separator = Codec<bool>::decode(member);
    } else {
      throw RequestError(fmt::format("a menu item has no \"{}\"", name));
    }
  }
  return item;
}

std::function<void()> PopoverMenuItem::handler() const {
  return [title = item_.title, from = from_, &events = events_] {
    events.emit({"popoverMenuItemHandler", from, {title}});
  };
}

}  // namespace samplehost
