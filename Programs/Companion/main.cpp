// mirelo-webview JSON: the web-view companion, started by the plug-in. Ends with the messenger, when its window is
// closed, or when it is asked to (SIGTERM).

#include <signal.h>
#include <sys/signalfd.h>

#include <cstdio>
#include <exception>

#include "Backends/Desktop/DesktopBackend.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/Session.h"
#include "Programs/Companion/Companion.h"

namespace {

constexpr const char* kIdentifier = "com.brenholt.macos.mirelo.webview";

/// Readable when the process is asked to end. Made before any thread, so that all of them leave the signal to it.
platform::FileDescriptor endRequests() {
  sigset_t asked;
  sigemptyset(&asked);
  sigaddset(&asked, SIGTERM);
  sigprocmask(SIG_BLOCK, &asked, nullptr);
  return platform::FileDescriptor(signalfd(-1, &asked, SFD_CLOEXEC | SFD_NONBLOCK));
}

int run(const char* launchArgument) {
  const platform::FileDescriptor requests = endRequests();
  desktop::DesktopBackend backend({.identifier = kIdentifier});
  const platform::Session session(backend);
  companion::Companion companion(launchArgument);
  const auto watch = backend.loop().watch(requests.get(), [&] {
    signalfd_siginfo told{};
    if (read(requests.get(), &told, sizeof told) > 0) companion.end();
  });
  const int status = platform::NSApplication::shared().run();
  backend.loop().unwatch(watch);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc > 1 ? argv[1] : "");
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "mirelo-webview: %s\n", problem.what());
    return 2;
  }
}
