#pragma once

#include <functional>
#include <memory>

#include "Platform/AppKit/NSWindow.h"
#include "Programs/Companion/Page.h"
#include "Programs/Companion/PageView.h"

namespace companion {

/// The companion's one window, beside the host's. Main thread.
class CompanionWindow final : public platform::NSWindowDelegate, public std::enable_shared_from_this<CompanionWindow> {
 public:
  /// `closed` runs when the user has closed it.
  static std::shared_ptr<CompanionWindow> make(std::function<void()> closed);

  void show(const Page& page);
  void hide();
  /// Stands to the right of that frame, on its left where the screen ends; screen points.
  void follow(const platform::Rect& parentFrame);
  /// In front of the other windows, without the focus.
  void comeForward();
  bool windowShouldClose(platform::NSWindow& window) override;

 private:
  CompanionWindow() = default;

  std::function<void()> closed_;
  std::shared_ptr<platform::NSWindow> window_;
  std::shared_ptr<PageView> view_;
};

}  // namespace companion
