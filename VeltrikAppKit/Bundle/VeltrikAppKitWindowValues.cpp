#include <utility>

#include "VeltrikAppKit/NSWindow+Veltrik.h"
#include "VeltrikAppKit/Protocols/VeltrikAppKitDiagnosis.h"

extern "C" __attribute__((visibility("default"))) void VeltrikAppKitWindowValues(const platform::NSWindow& window,
                                                                                 platform::Dictionary* values) {
  const auto& attached = window.attached();
  platform::Dictionary result;
  result["hostWindowID"] = attached.get(veltrik::kHostWindowID);
  result["isHelperBound"] = attached.get(veltrik::kIsHelperBound);
  result["contentTopInset"];
  if (const auto& inset = attached.get(veltrik::kContentTopInset)) result["contentTopInset"] = *inset;
  result["isPopover"] = attached.get(veltrik::kIsPopover);
  result["isForcedClose"] = attached.get(veltrik::kIsForcedClose);
  result["hasFirstOrderFrontHandler"] = static_cast<bool>(attached.get(veltrik::kFirstOrderFrontHandler));
  *values = std::move(result);
}
