#include "Platform/AppKit/NSOpenPanel.h"

namespace platform {

std::shared_ptr<NSOpenPanel> NSOpenPanel::make() {
  struct Made : NSOpenPanel {};
  auto panel = std::make_shared<Made>();
  introduce(panel);
  return panel;
}

port::FilePanelRequest NSOpenPanel::request() const {
  using Kind = port::FilePanelRequest::Kind;
  port::FilePanelRequest request = NSSavePanel::request();
  request.kind = directories_ && !files_ ? Kind::openFolder : Kind::open;
  request.multiple = multiple_;
  return request;
}

}  // namespace platform
