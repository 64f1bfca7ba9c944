#include "Platform/Foundation/SystemTools.h"

#include <map>
#include <mutex>

#include "Platform/Foundation/Bundle.h"

namespace platform {

namespace {

struct Replaced {
  std::mutex mutex;
  std::map<std::string, std::string> locations;
};

Replaced& replaced() {
  static auto& all = *new Replaced();  // never destroyed: a worker may still start a tool
  return all;
}

}  // namespace

std::string SystemTools::locationOf(const std::string& launchPath) {
  {
    Replaced& all = replaced();
    const std::lock_guard lock(all.mutex);
    if (const auto found = all.locations.find(launchPath); found != all.locations.end()) return found->second;
  }
  if (launchPath == "/usr/bin/open") return Bundle::programPath().replace_filename("open");
  return launchPath;
}

SystemTools::Replacement::Replacement(std::string launchPath, std::string location)
    : launchPath_(std::move(launchPath)) {
  Replaced& all = replaced();
  const std::lock_guard lock(all.mutex);
  all.locations[launchPath_] = std::move(location);
}

SystemTools::Replacement::~Replacement() {
  Replaced& all = replaced();
  const std::lock_guard lock(all.mutex);
  all.locations.erase(launchPath_);
}

}  // namespace platform
