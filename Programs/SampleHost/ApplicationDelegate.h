#pragma once

#include <memory>

#include "Platform/AppKit/NSApplication.h"
#include "Programs/SampleHost/Answers.h"
#include "Programs/SampleHost/HostEvent.h"

namespace samplehost {

/// The host's application delegate. Which of the three questions its class has a method for is told by the answers: a
/// null answer takes the method away. Main thread.
class ApplicationDelegate : public platform::NSApplicationDelegate {
 public:
  /// Both are borrowed and outlive the delegate.
  ApplicationDelegate(const Answers& answers, const HostEvents& events);

  platform::runtime::Class& runtimeClass() const override { return *class_; }
  /// Gives the delegate a class as the answers now want it; what was taken over from the former class is left behind.
  void remakeClass();

 private:
  bool shouldHandleReopen(bool hasVisibleWindows);
  platform::TerminateReply shouldTerminate();
  std::shared_ptr<platform::NSMenu> dockMenu();
  Value ask(const char* selector, Value::Array arguments = {});

  const Answers& answers_;
  const HostEvents& events_;
  platform::runtime::Class* class_ = nullptr;
};

}  // namespace samplehost
