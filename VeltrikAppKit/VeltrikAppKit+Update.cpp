#include "VeltrikAppKit/AppRestarter.h"
#include "VeltrikAppKit/VeltrikAppKit.h"

namespace veltrik {

void VeltrikAppKit::restartWithDownloadedUpdateFilePath(const std::string& path) {
  appRestarter_ = AppRestarter::make();
  appRestarter_->restart(path);
}

}  // namespace veltrik
