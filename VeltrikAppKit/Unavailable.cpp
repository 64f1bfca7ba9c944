#include "VeltrikAppKit/Unavailable.h"

#include <string>

#include "Platform/Foundation/Log.h"

namespace veltrik {

void logUnavailable(std::string_view member) {
  platform::NSLog(std::string(member) + " is not available in this build");
}

}  // namespace veltrik
