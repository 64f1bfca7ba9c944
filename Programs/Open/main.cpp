// open [-n] LOCATION [--args ARGUMENT...]: starts an application bundle, a file URL or a path. One that runs already is
// left as it is, unless -n asks for another one. What follows --args are the new process's arguments.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Foundation/ApplicationProcess.h"
#include "Platform/Foundation/URL.h"

namespace {

constexpr int kFailed = 1;
constexpr int kMisused = 2;

struct Misuse : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Request {
  std::string path;
  bool anotherInstance = false;
  std::vector<std::string> arguments;
};

std::string pathOf(const std::string& location) {
  if (location.starts_with('/')) return location;
  const auto url = platform::URL::fromString(location);
  if (!url) return platform::URL::fileURL(location).path();
  if (!url->isFileURL()) throw Misuse(location + " is not a file's location");
  return url->path();
}

Request parse(const std::vector<std::string>& words) {
  Request request;
  std::optional<std::string> location;
  for (std::size_t at = 0; at < words.size(); ++at) {
    if (words[at] == "--args") {
      request.arguments.assign(words.begin() + static_cast<std::ptrdiff_t>(at) + 1, words.end());
      break;
    }
    if (words[at] == "-n")
      request.anotherInstance = true;
    else if (location || words[at].starts_with('-'))
      throw Misuse("unexpected argument " + words[at]);
    else
      location = words[at];
  }
  if (!location) throw Misuse("no application given");
  request.path = pathOf(*location);
  return request;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Request request = parse({argv + 1, argv + argc});
    platform::ApplicationProcess::open(request.path, request.arguments, request.anotherInstance);
    return EXIT_SUCCESS;
  } catch (const Misuse& problem) {
    std::fprintf(stderr, "open: %s\nusage: open [-n] LOCATION [--args ARGUMENT...]\n", problem.what());
    return kMisused;
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "open: %s\n", problem.what());
    return kFailed;
  }
}
