#include "Programs/SampleHost/Host.h"

#include <utility>

namespace samplehost {

Host::Host(std::shared_ptr<veltrik::VeltrikAppKitProtocol> appKit)
    : appKit_(std::move(appKit)),
      applicationDelegate_(std::make_shared<ApplicationDelegate>(answers_, events_)),
      appDelegate_(std::make_shared<AppDelegate>(answers_, events_)) {}

Host::~Host() = default;

void Host::launch() {
  platform::NSApplication::shared().setDelegate(applicationDelegate_);
  appKit_->setDelegate(appDelegate_);
  appKit_->applicationDidFinishLaunching();
}

void Host::end() {
  appKit_->applicationWillTerminate();
}

void Host::bind(const std::string& identifier) {
  window(identifier);
  appKit_->bindNSWindowWithUIWindowID(identifier, [this, identifier](const HelperPointer& helper) {
    HostWindow& record = window(identifier);
    record.helper = helper;
    helper->setDelegate(record.delegate);
    events_.emit({"uiKitBinding", "window:" + identifier, {}});
  });
}

HostWindow& Host::window(const std::string& identifier) {
  HostWindow& record = windows_[identifier];
  if (!record.delegate) {
    record.delegate = std::make_shared<WindowDelegate>(identifier, answers_, events_, *this);
    record.textDelegate = std::make_shared<TextDelegate>(identifier, answers_, events_);
  }
  return record;
}

HelperPointer Host::helperOf(const std::string& identifier) const {
  const auto found = windows_.find(identifier);
  return found == windows_.end() ? nullptr : found->second.helper;
}

platform::Size Host::boundsOf(const std::string& identifier) const {
  const auto view = layer_.hostView(identifier);
  return view ? view->bounds().size() : platform::Size{};
}

}  // namespace samplehost
