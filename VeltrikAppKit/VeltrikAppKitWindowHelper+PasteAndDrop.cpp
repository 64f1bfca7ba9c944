#include "VeltrikAppKit/Unavailable.h"
#include "VeltrikAppKit/VeltrikAppKitWindowHelper.h"

namespace veltrik {

void VeltrikAppKitWindowHelper::setAsFileDropable() {
  logUnavailable("setAsFileDropable");
}

std::vector<platform::URL> VeltrikAppKitWindowHelper::readPastedFilePath() {
  logUnavailable("readPastedFilePath");
  return {};
}

}  // namespace veltrik
