#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Programs/SampleHost/Codec.h"

namespace samplehost {

/// A window of the host as a value: the text "window:ID".
struct WindowName {
  std::string identifier;
};

/// A popover's description as a value; its parent is named, not referred to.
struct PopoverAnswer {
  std::optional<platform::Rect> targetFrame;
  std::optional<WindowName> parentWindowHelper;
  std::optional<std::vector<std::int32_t>> attachments;
};

template <>
struct Codec<WindowName> {
  static WindowName decode(const Value& value);
};
/// `{"targetFrame","parentWindowHelper","attachments"}`, each may be missing or null
template <>
struct Codec<PopoverAnswer> {
  static PopoverAnswer decode(const Value& value);
};

}  // namespace samplehost
