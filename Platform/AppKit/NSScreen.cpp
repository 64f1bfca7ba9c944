#include "Platform/AppKit/NSScreen.h"

#include "Platform/Foundation/Session.h"

namespace platform {

std::vector<port::ScreenInfo> NSScreen::screens() {
  return Session::current().backend().windows().screens();
}

std::optional<port::ScreenInfo> NSScreen::screenFor(const Rect& frame) {
  std::optional<port::ScreenInfo> best;
  double bestArea = 0;
  for (const port::ScreenInfo& screen : screens()) {
    const Rect shown = screen.frame.intersection(frame);
    const double area = shown.width * shown.height;
    if (area <= bestArea) continue;
    best = screen;
    bestArea = area;
  }
  return best;
}

}  // namespace platform
