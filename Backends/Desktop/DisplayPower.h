#pragma once

#include <QTimer>
#include <functional>

#include "Backends/Desktop/XServer.h"

namespace desktop {

/// Whether the X server saves the screens' power (DPMS extension). It doesn't tell by itself, so it is asked every
/// second. Main thread.
class DisplayPower {
 public:
  /// `changed` is called when the screens are switched off, or to a state between, and when they are on again.
  explicit DisplayPower(std::function<void(bool off)> changed);

 private:
  bool isCapable();
  void look();

  XServer x_;
  std::function<void(bool)> changed_;
  bool off_ = false;
  QTimer timer_;
};

}  // namespace desktop
