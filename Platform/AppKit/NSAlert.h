#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Export.h"

namespace platform {

class AlertView;
class NSButton;
class NSWindow;

enum class AlertStyle { warning = 0, informational = 1, critical = 2 };

namespace AlertResponse {
inline constexpr int kFirstButton = 1000, kSecondButton = 1001, kThirdButton = 1002;
}

/// Tells the user something and waits for one of its buttons. Return presses the one that has the focus, the first one
/// at the beginning; Escape the second one; Tab and the arrows move the focus. Its window is never larger than the
/// screen: texts that are too long for it scroll. Can be shown again after it was answered. Main thread.
class PLATFORM_EXPORT NSAlert : public std::enable_shared_from_this<NSAlert> {
 public:
  static std::shared_ptr<NSAlert> make();
  ~NSAlert();
  NSAlert(const NSAlert&) = delete;
  NSAlert& operator=(const NSAlert&) = delete;

  AlertStyle alertStyle() const { return style_; }
  void setAlertStyle(AlertStyle style);
  const std::string& messageText() const { return message_; }
  void setMessageText(std::string utf8);
  const std::string& informativeText() const { return informative_; }
  void setInformativeText(std::string utf8);
  std::shared_ptr<NSButton> addButton(const std::string& title);
  const std::vector<std::shared_ptr<NSButton>>& buttons() const;

  /// Laid out, without a title bar. Until the alert is shown it is as high as icon and buttons need it: long texts run
  /// into the buttons then. Closed when the alert was answered, or is destroyed unanswered; then another one is made.
  std::shared_ptr<NSWindow> window();

  /// Shows the alert, with a title bar, in front of the application's other windows, which get no input meanwhile, and
  /// waits. `AlertResponse::kFirstButton` and so on, or `ModalResponse::kAbort` when something else ended it.
  int runModal();
  /// Hangs the alert from `parent` as a sheet and returns; `completion` gets the response once, when the sheet has
  /// gone. The alert lives until then.
  void beginSheetModal(const std::shared_ptr<NSWindow>& parent, std::function<void(int response)> completion);

 private:
  class Icon;
  class Ending;

  NSAlert() = default;
  void buildView();
  void contentChanged();
  void fit(double limit);
  void answered(std::size_t button);
  void closeWindow();

  AlertStyle style_ = AlertStyle::warning;
  std::string message_;
  std::string informative_;
  std::shared_ptr<Icon> icon_;
  std::shared_ptr<AlertView> view_;
  std::shared_ptr<NSWindow> window_;
  bool shown_ = false;
};

}  // namespace platform
