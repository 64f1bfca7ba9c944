#include "Platform/AppKit/NSPanel.h"

namespace platform {

std::shared_ptr<NSPanel> NSPanel::make(const Rect& contentRect, unsigned styleMask) {
  struct Made : NSPanel {
    Made(const Rect& content, unsigned style) : NSPanel(content, style) {}
  };
  auto panel = std::make_shared<Made>(contentRect, styleMask);
  introduce(panel);
  return panel;
}

}  // namespace platform
