#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "Platform/Export.h"

namespace platform {

/// Writes one line to the log: to the sink, or to standard error with a time stamp while there is none. Any thread.
PLATFORM_EXPORT void NSLog(std::string_view line);

/// Replaces the log's sink; an empty one brings standard error back. Returns the former one. Any thread; the sink may
/// be called from any thread, by one at a time.
PLATFORM_EXPORT std::function<void(const std::string&)> setLogSink(std::function<void(const std::string&)> sink);

}  // namespace platform
