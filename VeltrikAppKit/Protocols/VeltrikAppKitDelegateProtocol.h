#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "VeltrikAppKit/Protocols/KeyModifier.h"

namespace veltrik {

/// What the host answers to the principal object. Held weakly; a call to a delegate that has gone is skipped. Main
/// thread. A member may call back into the plug-in, set another delegate or let go of any object; an exception that it
/// throws passes through the plug-in to whatever led to the call, and leaves the plug-in usable.
class VeltrikAppKitDelegateProtocol {
 public:
  virtual ~VeltrikAppKitDelegateProtocol() = default;

  /// A key that nobody before the host took. `eventType`: 0 key down, 1 key up. True lets the event go on, false
  /// swallows it.
  virtual bool handleFunctionKey(std::int32_t keyCode, const std::vector<KeyModifier>& modifiers,
                                 std::int32_t eventType) = 0;
  /// 0: the screens went to sleep, 1: they woke.
  virtual void notifyWorkspaceEnvironment(std::int32_t environment) = 0;
  /// The user is active; at most once a second, `interaction` always 2.
  virtual void notifyUserInteraction(std::int32_t interaction) = 0;

  /// The user asked for the application again (a second start, a dock click). True lets the platform show a window when
  /// none is visible.
  virtual bool applicationShouldHandleReopen() = 0;
  virtual void applicationDidBecomeActive() = 0;
  /// The application is about to terminate; its windows have been closed.
  virtual void applicationUserTerminate() = 0;
  /// The dock menu's "Mirelo 열기" was chosen.
  virtual void openMainWindow() = 0;

  /// Feedback of the web-view companion as pretty-printed JSON text; nothing when it carried none that JSON can hold.
  virtual void handleWebViewFeedBackWithUserInfo(const std::optional<std::string>& json) = 0;
  /// Whether the companion could be had; its start is then under way.
  virtual void webViewDownloadCompletedWithResult(bool result) = 0;
};

}  // namespace veltrik
