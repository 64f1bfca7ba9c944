#include "Platform/Foundation/ProcessInfo.h"

namespace platform {

namespace {

int majorVersion = 11;

}  // namespace

int operatingSystemVersion() {
  return majorVersion;
}

void setOperatingSystemVersionForTesting(int major) {
  majorVersion = major;
}

}  // namespace platform
