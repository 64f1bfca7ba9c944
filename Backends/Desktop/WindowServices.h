#pragma once

#include "Backends/Desktop/Composition.h"
#include "Backends/Desktop/KeyFilter.h"
#include "Backends/Desktop/XServer.h"

namespace desktop {

/// What the surfaces of one back end share.
class WindowServices {
 public:
  WindowServices(KeyFilter::Finder finder, std::string className)
      : identifier(std::move(className)), keys(x, composition, std::move(finder)) {}

  std::string identifier;  ///< the desktop file's name: every window's class
  XServer x;
  Composition composition;
  KeyFilter keys;
};

}  // namespace desktop
