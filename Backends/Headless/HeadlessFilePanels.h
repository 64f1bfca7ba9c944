#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Backends/Headless/HeadlessLoop.h"
#include "Backends/Headless/HeadlessWindowHost.h"
#include "Backends/Headless/Journal.h"
#include "Platform/Port/FilePanels.h"

namespace headless {

/// File panels in memory, answered by the test in the user's place. One that is asked for stands in the journal:
/// "panel: save a.txt in /home/someone".
class HeadlessFilePanels final : public platform::port::FilePanels {
 public:
  struct Panel {
    std::uint64_t handle;  ///< its surface's
    platform::port::FilePanelRequest request;
    Answer answered;
  };

  HeadlessFilePanels(HeadlessLoop& loop, HeadlessWindowHost& windows, Journal& journal)
      : loop_(loop), windows_(windows), journal_(journal) {}

  std::unique_ptr<platform::port::Surface> makePanel(platform::port::SurfaceSink& sink,
                                                     const platform::port::SurfaceState& state,
                                                     const platform::port::FilePanelRequest& request,
                                                     Answer answered) override;

  /// The newest one that is on the screen; null for none. Borrowed until it is answered.
  const Panel* open();
  const HeadlessSurface& surfaceOf(const Panel& panel) const { return *windows_.surfaceWithHandle(panel.handle); }
  /// The user chooses these in the newest panel; the application hears of it in a later turn. False when none is open.
  bool choose(std::vector<std::string> paths) { return answer(std::move(paths)); }
  /// The user leaves the newest panel.
  bool leave() { return answer(std::nullopt); }

 private:
  bool answer(std::optional<std::vector<std::string>> paths);

  HeadlessLoop& loop_;
  HeadlessWindowHost& windows_;
  Journal& journal_;
  std::vector<Panel> panels_;
};

}  // namespace headless
