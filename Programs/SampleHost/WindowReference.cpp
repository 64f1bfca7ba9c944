#include "Programs/SampleHost/WindowReference.h"

#include <fmt/format.h>

#include "Platform/AppKit/NSApplication.h"

namespace samplehost {

WindowReference Codec<WindowReference>::decode(const Value& value) {
  if (value.get<std::int64_t>()) return {*value.get<std::int64_t>()};
  if (const auto* identifier = value.get<std::string>()) return {*identifier};
  throw RequestError(fmt::format("expected a window's identifier or number, got {}", kindOf(value)));
}

std::shared_ptr<platform::NSWindow> windowAt(const CompatibilityLayer& layer, const WindowReference& reference) {
  if (const auto* number = std::get_if<std::int64_t>(&reference.value)) {
    if (auto window = platform::NSApplication::shared().windowWithNumber(*number)) return window;
    throw RequestError(fmt::format("there is no window number {}", *number));
  }
  const auto& identifier = std::get<std::string>(reference.value);
  if (auto window = layer.window(identifier)) return window;
  throw RequestError(fmt::format("there is no window \"{}\"", identifier));
}

}  // namespace samplehost
