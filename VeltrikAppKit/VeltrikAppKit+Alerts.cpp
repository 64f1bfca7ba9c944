#include <algorithm>
#include <limits>
#include <utility>

#include "Platform/AppKit/NSAlert.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "VeltrikAppKit/NSWindow+Veltrik.h"
#include "VeltrikAppKit/VeltrikAppKit.h"

namespace veltrik {

using platform::NSAlert;
using platform::NSApplication;
using platform::NSWindow;

namespace {

constexpr const char* kModalTitle = "MIRELO";

std::shared_ptr<NSAlert> makeAlert(const std::string& title, const std::string& message,
                                   const std::string& confirmTitle, const std::optional<std::string>& cancelTitle) {
  auto alert = NSAlert::make();
  alert->setAlertStyle(platform::AlertStyle::informational);
  alert->setMessageText(title);
  alert->setInformativeText(message);
  alert->addButton(confirmTitle);
  if (cancelTitle && !cancelTitle->empty()) alert->addButton(*cancelTitle);
  return alert;
}

/// In the next turn of the main queue, when the alert has gone.
void confirm(int response, std::function<void()> completion) {
  if (response == platform::AlertResponse::kFirstButton && completion)
    platform::DispatchQueue::main().async(std::move(completion));
}

double lowestTextEdge(const platform::NSView& content) {
  double lowest = std::numeric_limits<double>::max();
  for (const auto& view : content.subviews()) {
    const auto* text = dynamic_cast<const platform::NSTextField*>(view.get());
    if (text && !text->stringValue().empty()) lowest = std::min(lowest, text->frame().minY());
  }
  return lowest;
}

/// Makes the window as much higher as its texts run into its buttons.
void fitText(NSAlert& alert) {
  const auto window = alert.window();
  const double overlap = alert.buttons().front()->frame().maxY() - lowestTextEdge(*window->contentView());
  if (overlap <= 0) return;
  const platform::Size size = window->frame().size();
  window->setContentSize({size.width, size.height + overlap});
  window->contentView()->setNeedsLayout();
}

std::shared_ptr<NSWindow> sheetParent(const std::optional<std::string>& uiWindowID) {
  NSApplication& application = NSApplication::shared();
  if (!uiWindowID) return application.keyWindow();
  const auto windows = application.windows();
  const auto found = std::find_if(windows.begin(), windows.end(), [&](const auto& window) {
    return window->attached().get(kHostWindowID) == *uiWindowID;
  });
  return found == windows.end() ? application.keyWindow() : *found;
}

}  // namespace

bool VeltrikAppKit::isAppKitAlertPresented() const {
  NSApplication& application = NSApplication::shared();
  const auto key = application.keyWindow();
  if (!key || !(key->isSheet() || application.modalWindow())) return false;
  return !key->contentViewController() && !key->attached().get(kIsHelperBound);
}

void VeltrikAppKit::showAlertWith(const std::string& title, const std::string& message, const std::string& confirmTitle,
                                  const std::optional<std::string>& cancelTitle,
                                  std::function<void()> confirmCompletion) {
  const auto alert = makeAlert(title, message, confirmTitle, cancelTitle);
  alert->window()->setTitle(kModalTitle);
  confirm(alert->runModal(), std::move(confirmCompletion));
}

void VeltrikAppKit::showSheetAlertWith(const std::string& title, const std::string& message,
                                       const std::string& confirmTitle, const std::optional<std::string>& cancelTitle,
                                       const std::optional<std::string>& uiWindowID,
                                       std::function<void()> confirmCompletion) {
  const auto alert = makeAlert(title, message, confirmTitle, cancelTitle);
  fitText(*alert);
  const auto parent = sheetParent(uiWindowID);
  if (!parent) return;
  alert->beginSheetModal(parent, [completion = std::move(confirmCompletion)](int response) mutable {
    confirm(response, std::move(completion));
  });
}

}  // namespace veltrik
