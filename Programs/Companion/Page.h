#pragma once

#include <optional>
#include <string>

#include "Platform/Port/Geometry.h"
#include "Platform/Port/Value.h"

namespace companion {

/// What the companion is to show, as the launch argument and "webViewLoading" tell it. They may come from anyone.
struct Page {
  std::string url;
  std::string customHeader;
  std::string customUserAgent;
  platform::Size windowSize{420, 680};
  /// The host window to follow; empty for whichever moves.
  std::string parentID;

  static Page from(const platform::Dictionary& parameters);
};

/// A text that a dictionary holds, or an empty one.
std::string textIn(const platform::Dictionary& dictionary, const std::string& key);

/// "{{x, y}, {width, height}}" and "{width, height}"; nothing for another text, or for what no screen can show.
std::optional<platform::Rect> rectFrom(const std::string& text);
std::optional<platform::Size> sizeFrom(const std::string& text);

}  // namespace companion
