#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "Programs/SampleHost/Answers.h"
#include "Programs/SampleHost/AppDelegate.h"
#include "Programs/SampleHost/ApplicationDelegate.h"
#include "Programs/SampleHost/CompatibilityLayer.h"
#include "Programs/SampleHost/HostEvent.h"
#include "Programs/SampleHost/TextDelegate.h"
#include "Programs/SampleHost/WindowDelegate.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitProtocol.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitWindowHelperProtocol.h"
#include "VeltrikAppKit/Protocols/VeltrikStatusBarItemProtocol.h"

namespace samplehost {

/// A host window as the host knows it: its delegates, and its helper once it was bound.
struct HostWindow {
  std::shared_ptr<WindowDelegate> delegate;
  std::shared_ptr<TextDelegate> textDelegate;
  HelperPointer helper;
};

/// The host application: owns the principal object, the delegates and the helpers. Main thread.
class Host : public HostWindows {
 public:
  explicit Host(std::shared_ptr<veltrik::VeltrikAppKitProtocol> appKit);
  ~Host() override;
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  /// What a host does when it has launched, and when it is about to end.
  void launch();
  void end();

  veltrik::VeltrikAppKitProtocol& appKit() { return *appKit_; }
  const std::shared_ptr<AppDelegate>& appDelegate() { return appDelegate_; }
  ApplicationDelegate& applicationDelegate() { return *applicationDelegate_; }
  CompatibilityLayer& layer() { return layer_; }
  Answers& answers() { return answers_; }
  HostEvents& events() { return events_; }
  /// By number, from 1 on.
  std::map<std::string, std::shared_ptr<veltrik::VeltrikStatusBarItemProtocol>>& statusItems() { return statusItems_; }

  /// Has the window of this identifier bound when its native window appears; "uiKitBinding" is told then.
  void bind(const std::string& identifier);
  /// Makes the record at its first use.
  HostWindow& window(const std::string& identifier);
  HelperPointer helperOf(const std::string& identifier) const override;
  platform::Size boundsOf(const std::string& identifier) const override;

 private:
  Answers answers_;
  HostEvents events_;
  CompatibilityLayer layer_;
  std::shared_ptr<veltrik::VeltrikAppKitProtocol> appKit_;
  std::shared_ptr<ApplicationDelegate> applicationDelegate_;
  std::shared_ptr<AppDelegate> appDelegate_;
  std::map<std::string, HostWindow> windows_;
  std::map<std::string, std::shared_ptr<veltrik::VeltrikStatusBarItemProtocol>> statusItems_;
};

}  // namespace samplehost
