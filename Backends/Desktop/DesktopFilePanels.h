#pragma once

#include <string>
#include <vector>

#include "Backends/Desktop/SessionBus.h"
#include "Backends/Desktop/XServer.h"
#include "Platform/Port/FilePanels.h"

class QTranslator;

namespace desktop {

class FilePanelSurface;

/// File panels by the desktop portal; where there is none, or it doesn't take a request in time, by the toolkit. A
/// portal that hung once isn't asked again before another one has come.
class DesktopFilePanels final : public platform::port::FilePanels {
 public:
  /// Borrowed; outlives this.
  explicit DesktopFilePanels(SessionBus& bus) : bus_(bus) {}

  std::unique_ptr<platform::port::Surface> makePanel(platform::port::SurfaceSink& sink,
                                                     const platform::port::SurfaceState& state,
                                                     const platform::port::FilePanelRequest& request,
                                                     Answer answered) override;

  SessionBus& bus() { return bus_; }
  XServer& x() { return x_; }
  void add(FilePanelSurface& panel) { shown_.push_back(&panel); }
  void remove(FilePanelSurface& panel) { std::erase(shown_, &panel); }
  bool portalMayAnswer() const { return !portalHangs_; }
  void portalHangs() { portalHangs_ = true; }
  /// The toolkit's dialogs speak the user's language where that is installed.
  static void loadTranslation();

 private:
  void watchPortal();
  void ownerChanged(const std::string& owner);

  SessionBus& bus_;
  XServer x_;
  std::vector<FilePanelSurface*> shown_;
  std::string owner_;
  bool watches_ = false;
  bool portalHangs_ = false;
};

}  // namespace desktop
