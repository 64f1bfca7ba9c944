#pragma once

#include "Platform/Port/Canvas.h"

namespace samplehost {

/// What the host's own toolkit draws in one window; host points, origin at the top left. Main thread.
class HostScene {
 public:
  virtual ~HostScene() = default;
  virtual void draw(platform::port::Canvas& canvas, platform::Size size) = 0;
  /// A wheel turn; positive scrolls towards the start. True when the scene changed.
  virtual bool scroll(double /*points*/) { return false; }
};

}  // namespace samplehost
