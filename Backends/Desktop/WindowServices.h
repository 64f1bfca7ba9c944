#pragma once

#include "Backends/Desktop/Composition.h"
#include "Backends/Desktop/DragContents.h"
#include "Backends/Desktop/KeyFilter.h"
#include "Backends/Desktop/SelectionReader.h"
#include "Backends/Desktop/WindowManagerFence.h"
#include "Backends/Desktop/XServer.h"

namespace desktop {

/// What the surfaces of one back end share.
class WindowServices {
 public:
  /// `passed`: of the fence.
  WindowServices(KeyFilter::Finder finder, std::function<void()> passed, std::string className,
                 SelectionReader& selectionReader)
      : identifier(std::move(className)),
        fence(x, std::move(passed)),
        keys(x, composition, std::move(finder)),
        selections(selectionReader) {}

  std::string identifier;  ///< the desktop file's name: every window's class
  XServer x;
  WindowManagerFence fence;
  Composition composition;
  KeyFilter keys;
  SelectionReader& selections;
  DragClock dragClock;
};

}  // namespace desktop
