#include "Platform/Foundation/UserDirectories.h"

#include "Platform/Foundation/Session.h"

namespace platform {

URL cachesDirectory() {
  return URL::directoryURL(Session::current().backend().folders().cache.native());
}

}  // namespace platform
