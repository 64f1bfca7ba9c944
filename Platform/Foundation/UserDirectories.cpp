#include "Platform/Foundation/UserDirectories.h"

#include <string>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/Session.h"

namespace platform {

URL cachesDirectory() {
  return URL::directoryURL(Session::current().backend().folders().cache.native());
}

std::optional<URL> downloadsDirectory() {
  const URL folder = URL::directoryURL(Session::current().backend().folders().downloads.native());
  try {
    FileManager().createDirectory(folder, true);
  } catch (const CocoaError& error) {
    NSLog(std::string("There is no folder for downloads: ") + error.what());
    return std::nullopt;
  }
  return folder;
}

}  // namespace platform
