#pragma once

#include <chrono>

namespace desktop {

/// Seconds, as the loop counts them and events carry them.
inline double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace desktop
