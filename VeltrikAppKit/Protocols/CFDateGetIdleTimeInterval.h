#pragma once

/// Seconds since the user's last input anywhere on the desktop; 0 when it can't be read, without a session and off the
/// main thread. A C function of the bundle: a host asks the loaded bundle for it by name.
extern "C" double CFDateGetIdleTimeInterval();

namespace veltrik {

using CFDateGetIdleTimeIntervalFunction = double();
inline constexpr const char* kCFDateGetIdleTimeIntervalSymbol = "CFDateGetIdleTimeInterval";

}  // namespace veltrik
