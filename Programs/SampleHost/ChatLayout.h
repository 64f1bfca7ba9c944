#pragma once

#include "Platform/Port/Geometry.h"

namespace samplehost {

/// Where the parts of a chat window stand; host points, origin at the window's top left.
struct ChatLayout {
  platform::Rect titleBar;
  /// The part of the title bar with which the user moves the window: what the window's buttons leave free.
  platform::Rect dragRegion;
  platform::Rect messages;
  platform::Rect composer;
  /// The composer's rounded field, and the text in it.
  platform::Rect field;
  platform::Rect input;
  platform::Rect hint;

  static ChatLayout of(platform::Size window);
};

}  // namespace samplehost
