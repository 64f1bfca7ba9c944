#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>

#include "Platform/AppKit/NSWindow.h"
#include "Programs/SampleHost/Codec.h"
#include "Programs/SampleHost/CompatibilityLayer.h"

namespace samplehost {

/// A native window by the identifier of its host window, or by its number.
struct WindowReference {
  std::variant<std::string, std::int64_t> value;
};

template <>
struct Codec<WindowReference> {
  static WindowReference decode(const Value& value);
};

/// Throws RequestError when there is no such window (any more).
std::shared_ptr<platform::NSWindow> windowAt(const CompatibilityLayer& layer, const WindowReference& reference);

}  // namespace samplehost
