#pragma once

#include <string_view>

namespace veltrik {

/// Writes the log line of a member that this build doesn't have yet; see docs/boundary.md.
void logUnavailable(std::string_view member);

}  // namespace veltrik
