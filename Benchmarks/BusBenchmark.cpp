// The counterpart of Peers/BareBus.cpp through our own notification centre.
//   bus-benchmark echo          answers every "ping" with a "pong" until its standard input ends
//   bus-benchmark measure N     sends N pings, each after the pong before it, and prints the round trips in nanoseconds

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "Backends/Desktop/DesktopBackend.h"
#include "Platform/Foundation/DistributedNotificationCenter.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"

namespace {

using Clock = std::chrono::steady_clock;
using Center = platform::DistributedNotificationCenter;

const platform::Dictionary kPayload = {
    {"parentID", "main"}, {"parentFrame", "{{10, 20}, {300, 400}}"}, {"isResized", "false"}};

void observe(const char* name, const std::function<void()>& heard) {
  Center::defaultCenter().addObserver(nullptr, name, "", Center::kSuspensionDeliverImmediately,
                                      [heard](const std::string&, const platform::Dictionary&) { heard(); });
}

void post(const char* name) {
  Center::defaultCenter().post(name, "", kPayload, Center::kDeliverImmediately);
}

void echo(platform::Session& session) {
  bool ended = false;
  observe("ping", [] { post("pong"); });
  session.backend().loop().watch(STDIN_FILENO, [&] {
    char byte = 0;
    ended = ::read(STDIN_FILENO, &byte, 1) <= 0;
  });
  std::puts("ready");
  std::fflush(stdout);
  platform::RunLoop::main().runUntil([&] { return ended; }, std::numeric_limits<double>::infinity());
}

void measure(int rounds) {
  Clock::time_point sent;
  const auto send = [&] {
    sent = Clock::now();
    post("ping");
  };
  observe("pong", [&] {
    const auto taken = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - sent);
    std::printf("%lld\n", static_cast<long long>(taken.count()));
    if (--rounds > 0) send();
  });
  send();
  platform::RunLoop::main().runUntil([&] { return rounds == 0; }, std::numeric_limits<double>::infinity());
}

}  // namespace

int main(int argc, char** argv) {
  desktop::DesktopBackend backend;
  platform::Session session(backend);
  if (argc > 1 && std::strcmp(argv[1], "echo") == 0)
    echo(session);
  else
    measure(argc > 2 ? std::atoi(argv[2]) : 1000);
  return 0;
}
