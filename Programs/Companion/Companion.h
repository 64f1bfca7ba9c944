#pragma once

#include <memory>
#include <string>

#include "Programs/Companion/CompanionWindow.h"
#include "Programs/Companion/Page.h"

namespace companion {

/// The web-view companion: shows the page that the messenger asks for beside its window, as far as the messenger's
/// notifications tell, and tells it back what happens. Main thread.
class Companion {
 public:
  /// `launchArgument` is the JSON text that it was started with.
  explicit Companion(const std::string& launchArgument);
  ~Companion();
  Companion(const Companion&) = delete;
  Companion& operator=(const Companion&) = delete;

  /// Tells the messenger, and ends the application's run.
  void end();

 private:
  void observe();
  void load(const platform::Dictionary& parameters);
  bool concerns(const platform::Dictionary& notification) const;
  static void feedBack(const std::string& event, const std::string& url);

  Page page_;
  std::optional<platform::Rect> parentFrame_;
  std::shared_ptr<CompanionWindow> window_;
};

}  // namespace companion
