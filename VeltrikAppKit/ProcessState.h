#pragma once

#include <map>
#include <memory>
#include <string>

#include "Platform/AppKit/NSMenu.h"
#include "Platform/Foundation/Bundle.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitDelegateProtocol.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitProtocol.h"

namespace veltrik {

/// What all principal objects of a process share. Main thread.
struct ProcessState {
  static ProcessState& current();

  /// The delegate set last. The taken-over questions of the application's delegate run without a principal object and
  /// reach the host through it.
  std::weak_ptr<VeltrikAppKitDelegateProtocol> sharedDelegate;
  /// By window identifier. A block that is being run has left an empty one in its place.
  std::map<std::string, VeltrikAppKitProtocol::WindowBinding> pendingWindowBindings;
  std::shared_ptr<platform::NSMenu> dockMenu;
};

/// The plug-in's own loaded bundle, where its images are; null when the plug-in was linked instead of loaded.
std::shared_ptr<platform::Bundle> appKitBundle();

}  // namespace veltrik
