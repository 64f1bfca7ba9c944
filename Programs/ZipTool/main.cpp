// veltrik-zip: lists, makes, changes and unpacks ZIP archives over the library's public interface.
// Ends with 0, with 1 and one line on standard error, or with 2 when it was called wrongly.

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <string_view>
#include <variant>
#include <vector>

#include "Programs/ZipTool/CommandLine.h"
#include "Programs/ZipTool/Commands.h"
#include "Programs/ZipTool/Output.h"
#include "Programs/ZipTool/TerminalText.h"

namespace ziptool {

void run(const HelpCommand&) {
  print(usageText());
  flushOutput();
}

namespace {

constexpr int kFailed = 1;
constexpr int kMisused = 2;

/// The one line about a failure. Names are escaped in it always: a line break in one would make it two.
int report(std::string_view text) {
  fmt::print(stderr, "veltrik-zip: {}\n", escapedControls(text));
  return kFailed;
}

int runGuarded(std::span<const std::string_view> words) {
  try {
    std::visit([](const auto& command) { run(command); }, parseCommandLine(words));
    return 0;
  } catch (const UsageError& error) {
    report(error.what());
    fmt::print(stderr, "{}", usageText());
    return kMisused;
  } catch (const std::bad_alloc&) {
    return report("out of memory");
  } catch (const std::exception& error) {
    return report(error.what());
  }
}

}  // namespace
}  // namespace ziptool

int main(int count, char** arguments) {
  return ziptool::runGuarded(std::vector<std::string_view>(arguments + std::min(count, 1), arguments + count));
}
