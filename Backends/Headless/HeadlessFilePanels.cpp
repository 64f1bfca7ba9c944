#include "Backends/Headless/HeadlessFilePanels.h"

#include <utility>

namespace headless {

using platform::port::FilePanelRequest;

namespace {

std::string describe(const FilePanelRequest& request) {
  const char* kinds[] = {"open", "open folder", "save"};
  std::string text = kinds[static_cast<int>(request.kind)];
  if (request.multiple) text += " several";
  if (!request.name.empty()) text += " " + request.name;
  return request.directory.empty() ? text : text + " in " + request.directory;
}

}  // namespace

std::unique_ptr<platform::port::Surface> HeadlessFilePanels::makePanel(platform::port::SurfaceSink& sink,
                                                                       const platform::port::SurfaceState& state,
                                                                       const FilePanelRequest& request,
                                                                       Answer answered) {
  journal_.write("panel: " + describe(request));
  auto surface = windows_.makeSurface(sink, state);
  panels_.push_back({surface->nativeHandle(), request, std::move(answered)});
  return surface;
}

const HeadlessFilePanels::Panel* HeadlessFilePanels::open() {
  std::erase_if(panels_, [this](const Panel& panel) { return !windows_.surfaceWithHandle(panel.handle); });
  return panels_.empty() ? nullptr : &panels_.back();
}

bool HeadlessFilePanels::answer(std::optional<std::vector<std::string>> paths) {
  if (!open()) return false;
  const Panel panel = std::move(panels_.back());
  panels_.pop_back();
  loop_.deliver([this, panel, paths = std::move(paths)] {
    if (windows_.surfaceWithHandle(panel.handle)) panel.answered(paths);
  });
  return true;
}

}  // namespace headless
