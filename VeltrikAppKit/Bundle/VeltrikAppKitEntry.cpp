#include "VeltrikAppKit/Protocols/VeltrikAppKitEntry.h"

#include "VeltrikAppKit/VeltrikAppKit.h"

extern "C" __attribute__((visibility("default"))) bool VeltrikAppKitCreate(
    std::uint32_t interfaceVersion, std::shared_ptr<veltrik::VeltrikAppKitProtocol>* principalObject) {
  if (interfaceVersion != veltrik::kVeltrikAppKitInterfaceVersion || !principalObject) return false;
  *principalObject = veltrik::VeltrikAppKit::make();
  return true;
}
