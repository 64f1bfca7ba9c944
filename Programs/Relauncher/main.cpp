// mirelo-relauncher -t APPLICATION -pid NUMBER: waits for the process to end, then starts the application. Comes with
// each update, since the application can't start itself when it has ended.

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/ApplicationProcess.h"
#include "Platform/Foundation/Log.h"

namespace {

constexpr int kFailed = 1;
constexpr int kMisused = 2;

struct Request {
  std::string application;
  pid_t process = 0;
};

std::optional<Request> parse(const std::vector<std::string_view>& words) {
  Request request;
  for (std::size_t at = 0; at + 1 < words.size(); at += 2) {
    const std::string_view value = words[at + 1];
    if (words[at] == "-t")
      request.application = value;
    else if (words[at] == "-pid")
      std::from_chars(value.data(), value.data() + value.size(), request.process);
  }
  if (words.size() != 4 || request.application.empty() || request.process <= 0) return std::nullopt;
  return request;
}

void log(const std::string& message) {
  platform::NSLog("[MireloRelauncher] " + message);
}

}  // namespace

int main(int argc, char** argv) {
  const auto request = parse({argv + 1, argv + argc});
  if (!request) {
    std::fputs("usage: mirelo-relauncher -t APPLICATION -pid NUMBER\n", stderr);
    return kMisused;
  }
  try {
    log("waiting for process " + std::to_string(request->process) + " to end");
    platform::waitUntilEnded(request->process);
    log("starting " + request->application);
    const auto started = platform::ApplicationProcess::open(request->application, {}, true);
    log("started as process " + std::to_string(started.id));
    return EXIT_SUCCESS;
  } catch (const std::exception& problem) {
    log(std::string("can't start it: ") + problem.what());
    return kFailed;
  }
}
