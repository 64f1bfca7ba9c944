#include "Backends/Headless/HeadlessBackend.h"

#include <stdlib.h>

#include <cerrno>
#include <system_error>

namespace headless {

namespace {

platform::port::Folders makeFolders() {
  std::string pattern = std::filesystem::temp_directory_path() / "headless-home-XXXXXX";
  if (!mkdtemp(pattern.data())) throw std::system_error(errno, std::generic_category(), pattern);
  const std::filesystem::path home = pattern;
  return {.home = home,
          .config = home / ".config",
          .data = home / ".local/share",
          .cache = home / ".cache",
          .downloads = home / "Downloads",
          .systemConfig = {home / "etc/xdg"}};
}

}  // namespace

HeadlessBackend::HeadlessBackend(HeadlessOptions options) : options_(options), folders_(makeFolders()) {
  windows_.textInputChanged_ = [this](HeadlessSurface& surface, bool endComposition) {
    inputMethod_.textInputChanged(surface, endComposition);
  };
}

HeadlessBackend::~HeadlessBackend() {
  std::error_code ignored;  // nothing is lost when a temporary folder stays behind
  std::filesystem::remove_all(folders_.home, ignored);
}

}  // namespace headless
