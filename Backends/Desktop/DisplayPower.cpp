#include "Backends/Desktop/DisplayPower.h"

#include <xcb/dpms.h>

#include <chrono>
#include <utility>

#include "Backends/Desktop/XReply.h"

namespace desktop {

namespace {

constexpr std::chrono::seconds kInterval{1};

}  // namespace

DisplayPower::DisplayPower(std::function<void(bool off)> changed) : changed_(std::move(changed)) {
  if (!isCapable()) return;
  timer_.callOnTimeout([this] { look(); });
  timer_.start(kInterval);
}

bool DisplayPower::isCapable() {
  const auto* extension = xcb_get_extension_data(x_.connection(), &xcb_dpms_id);
  if (!extension || !extension->present) return false;
  const auto reply = owned(xcb_dpms_capable_reply(x_.connection(), xcb_dpms_capable(x_.connection()), nullptr));
  return reply && reply->capable;
}

void DisplayPower::look() {
  const auto reply = owned(xcb_dpms_info_reply(x_.connection(), xcb_dpms_info(x_.connection()), nullptr));
  const bool off = reply && reply->state && reply->power_level != XCB_DPMS_DPMS_MODE_ON;
  if (std::exchange(off_, off) != off) changed_(off);
}

}  // namespace desktop
