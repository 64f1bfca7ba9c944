#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Platform/AppKit/NSWindow.h"
#include "Programs/SampleHost/HostView.h"

namespace samplehost {

/// Plays the layer between the host's touch-style toolkit and the desktop: each host window gets a native window with a
/// host view in it. The host knows its windows by identifier only. Main thread.
class CompatibilityLayer {
 public:
  static constexpr unsigned kStyle = platform::StyleMask::kTitled | platform::StyleMask::kClosable |
                                     platform::StyleMask::kMiniaturizable | platform::StyleMask::kResizable;

  /// Makes a window, not shown yet, and then sets its title: the identifier, unless another one is given. A window of
  /// the same identifier made earlier goes on without it. `frame` in screen points.
  std::shared_ptr<platform::NSWindow> makeWindow(const std::string& identifier, const platform::Rect& frame,
                                                 const std::optional<std::string>& title = std::nullopt,
                                                 unsigned styleMask = kStyle);
  /// Null when there is none (any more).
  std::shared_ptr<platform::NSWindow> window(const std::string& identifier) const;
  std::shared_ptr<HostView> hostView(const std::string& identifier) const;

 private:
  struct Entry {
    std::weak_ptr<platform::NSWindow> window;
    std::weak_ptr<HostView> view;
  };
  std::map<std::string, Entry> entries_;
};

}  // namespace samplehost
