#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Backends/Desktop/SessionBus.h"
#include "Platform/Port/FilePanels.h"

namespace desktop {

/// One file dialog of the desktop portal (org.freedesktop.portal.FileChooser). It is taken off the screen with this
/// object. Main thread.
class PortalFileChooser {
 public:
  static constexpr const char* kService = "org.freedesktop.portal.Desktop";

  struct Place {
    std::uint64_t parent = 0;  ///< an X11 window id, 0 for none
    bool modal = false;
  };
  /// The portal didn't show a dialog: there is none, it refused, or (`hangs`) it didn't say anything in time.
  using Failed = std::function<void(bool hangs)>;

  /// Asks for the dialog. One of the two completions runs, once, in a later turn, and may destroy this object.
  PortalFileChooser(SessionBus& bus, const platform::port::FilePanelRequest& request, const Place& place,
                    platform::port::FilePanels::Answer answered, Failed failed);
  ~PortalFileChooser();
  PortalFileChooser(const PortalFileChooser&) = delete;
  PortalFileChooser& operator=(const PortalFileChooser&) = delete;

 private:
  struct SlotUnref {
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
  };
  void observe();
  void ask(const platform::port::FilePanelRequest& request, const Place& place, const std::string& token);
  void asked(const SessionBus::Reply& reply, bool inTime);
  void keep(sd_bus_message* response);
  void take(const std::string& path, const std::optional<std::vector<std::string>>& paths);
  void fail(bool hangs);

  SessionBus& bus_;
  platform::port::FilePanels::Answer answered_;
  Failed failed_;
  std::string path_;  ///< of the request; empty when the portal has nothing to close
  std::unique_ptr<sd_bus_slot, SlotUnref> observation_;
  std::shared_ptr<bool> life_ = std::make_shared<bool>();
};

}  // namespace desktop
