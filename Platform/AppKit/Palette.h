#pragma once

#include "Platform/Port/Text.h"

/// The platform's look: light and neutral. Every view that draws something of its own takes its colours from here.
namespace platform::palette {

inline constexpr Color kWindow{0.965, 0.965, 0.969, 1};
inline constexpr Color kTitleBar{0.925, 0.925, 0.933, 1};
inline constexpr Color kSeparator{0.82, 0.82, 0.835, 1};
inline constexpr Color kText{0.13, 0.13, 0.15, 1};
inline constexpr Color kInactiveText{0.58, 0.58, 0.61, 1};
inline constexpr Color kSelection{0.70, 0.84, 1.0, 1};
/// Behind selected text that has no keyboard.
inline constexpr Color kInactiveSelection{0.85, 0.85, 0.85, 1};
inline constexpr Color kScrollerKnob{0, 0, 0, 0.45};
inline constexpr Color kScrollerTrack{0.93, 0.93, 0.93, 1};

inline constexpr Color kCloseButton{0.93, 0.42, 0.37, 1};
inline constexpr Color kMiniaturizeButton{0.96, 0.75, 0.31, 1};
inline constexpr Color kZoomButton{0.38, 0.77, 0.33, 1};
inline constexpr Color kInactiveButton{0.80, 0.80, 0.82, 1};
/// What the user is most likely to want, and what is written on it.
inline constexpr Color kAccent{0.16, 0.45, 0.92, 1};
inline constexpr Color kAccentText{1, 1, 1, 1};
inline constexpr Color kFocusRing{0.16, 0.45, 0.92, 0.45};
inline constexpr Color kControl{1, 1, 1, 1};
inline constexpr Color kControlRim{0.74, 0.74, 0.76, 1};
inline constexpr Color kWarning{0.93, 0.60, 0.11, 1};
inline constexpr Color kCritical{0.85, 0.26, 0.22, 1};
/// Laid over a button while it is pressed, and its rim.
inline constexpr Color kShade{0, 0, 0, 0.18};

}  // namespace platform::palette
