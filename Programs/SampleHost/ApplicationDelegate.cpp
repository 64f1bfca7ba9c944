#include "Programs/SampleHost/ApplicationDelegate.h"

#include <deque>
#include <utility>

#include "Platform/AppKit/NSMenu.h"

namespace samplehost {

using platform::NSApplicationDelegate;
using platform::TerminateReply;

namespace {
constexpr const char* kName = "application";

ApplicationDelegate& self(NSApplicationDelegate& delegate) {
  return static_cast<ApplicationDelegate&>(delegate);
}
/// A class lives as long as the process, also when the delegate has another one by now.
std::deque<platform::runtime::Class>& madeClasses() {
  static auto& classes = *new std::deque<platform::runtime::Class>();
  return classes;
}
}  // namespace

ApplicationDelegate::ApplicationDelegate(const Answers& answers, const HostEvents& events)
    : answers_(answers), events_(events) {
  remakeClass();
}

void ApplicationDelegate::remakeClass() {
  class_ = &madeClasses().emplace_back("SampleHostApplicationDelegate", nullptr);
  const auto has = [this](const auto& message) { return !answers_.get(kName, message.selector.name()).isNull(); };
  if (has(platform::kShouldHandleReopen))
    class_->addMethod(platform::kShouldHandleReopen, [](NSApplicationDelegate& delegate, bool hasVisibleWindows) {
      return self(delegate).shouldHandleReopen(hasVisibleWindows);
    });
  if (has(platform::kShouldTerminate))
    class_->addMethod(platform::kShouldTerminate,
                      [](NSApplicationDelegate& delegate) { return self(delegate).shouldTerminate(); });
  if (has(platform::kDockMenu))
    class_->addMethod(platform::kDockMenu, [](NSApplicationDelegate& delegate) { return self(delegate).dockMenu(); });
}

Value ApplicationDelegate::ask(const char* selector, Value::Array arguments) {
  events_.emit({selector, kName, std::move(arguments)});
  return answers_.get(kName, selector);
}

bool ApplicationDelegate::shouldHandleReopen(bool hasVisibleWindows) {
  const auto answer =
      Codec<std::optional<bool>>::decode(ask("applicationShouldHandleReopen:hasVisibleWindows:", {hasVisibleWindows}));
  return answer.value_or(true);
}

TerminateReply ApplicationDelegate::shouldTerminate() {
  const auto answer = Codec<std::optional<std::int32_t>>::decode(ask("applicationShouldTerminate:"));
  return static_cast<TerminateReply>(answer.value_or(1));
}

std::shared_ptr<platform::NSMenu> ApplicationDelegate::dockMenu() {
  const auto title = Codec<std::optional<std::string>>::decode(ask("applicationDockMenu:"));
  return title ? std::make_shared<platform::NSMenu>(*title) : nullptr;
}

}  // namespace samplehost
