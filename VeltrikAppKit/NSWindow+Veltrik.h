#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Runtime/AttachedValues.h"

namespace veltrik {

// Values that travel with a native window, readable by code that has only the window.

/// The identifier of the host window drawn in the native window; empty for a window that is not the host's.
inline const platform::runtime::AttachedKey<std::string> kHostWindowID{};
/// A window helper manages the window.
inline const platform::runtime::AttachedKey<bool> kIsHelperBound{false};
/// What a bound window's content leaves free at the top of the frame, in points; nothing: no band.
inline const platform::runtime::AttachedKey<std::optional<double>> kContentTopInset{};
inline const platform::runtime::AttachedKey<bool> kIsPopover{false};
/// The application is terminating.
inline const platform::runtime::AttachedKey<bool> kIsForcedClose{false};
/// Runs once, right after the window was first made key and ordered front.
inline const platform::runtime::AttachedKey<std::function<void(platform::NSWindow&)>> kFirstOrderFrontHandler{};

// The selectors that trade places with the window class's own; sent from inside a replacement they reach the system's.

inline const platform::SetTitleMessage kSetVeltrikTitle{"setVeltrikTitle:"};
inline const platform::OrderFrontMessage kVeltrikMakeKeyAndOrderFront{"veltrikMakeKeyAndOrderFront:"};
inline const platform::RectMessage kVeltrikContentRectForFrameRect{"veltrikContentRectForFrameRect:"};
inline const platform::RectMessage kVeltrikFrameRectForContentRect{"veltrikFrameRectForContentRect:"};

/// Makes every window run the replacements, once a process however often it is called.
void installWindowMethodExchanges();

/// 29 points, or 23 on systems before version 11.
double standardTitleBarHeight();
/// The height that the window's frame has over its content rectangle.
double measuredTitleBarHeight(platform::NSWindow& window);

}  // namespace veltrik
