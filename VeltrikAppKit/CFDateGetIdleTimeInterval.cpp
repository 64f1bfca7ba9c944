#include "VeltrikAppKit/Protocols/CFDateGetIdleTimeInterval.h"

#include "Platform/Foundation/IdleTime.h"

extern "C" __attribute__((visibility("default"))) double CFDateGetIdleTimeInterval() {
  constexpr double kNanosecondsPerSecond = 1e9;
  return static_cast<double>(platform::systemIdleNanoseconds().value_or(0)) / kNanosecondsPerSecond;
}
