#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Port/WindowHost.h"

namespace platform::port {

/// What a file panel is for. Names and paths are bytes as the file system takes them.
struct FilePanelRequest {
  enum class Kind { open, openFolder, save };

  Kind kind = Kind::open;
  bool multiple = false;
  std::string name;       ///< proposed for what is saved
  std::string directory;  ///< absolute, where the panel starts; empty: where the machine likes
};

/// The desktop's own dialogs for choosing files. Main thread.
class FilePanels {
 public:
  /// Gets absolute paths, or nothing when the user left the dialog.
  using Answer = std::function<void(const std::optional<std::vector<std::string>>& paths)>;
  virtual ~FilePanels() = default;
  /// A dialog as a surface of the application: it is there while the state says so, belongs to its parent, and takes
  /// the focus. It has a size and a place of its own, and paints itself. Asks before a file is overwritten. `answered`
  /// runs at most once, in a later turn, and may destroy the surface; `sink` is borrowed and outlives it.
  virtual std::unique_ptr<Surface> makePanel(SurfaceSink& sink, const SurfaceState& state,
                                             const FilePanelRequest& request, Answer answered) = 0;
};

}  // namespace platform::port
