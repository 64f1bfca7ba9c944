#include "Programs/SampleHost/ConsoleTargets.h"

#include <fmt/format.h>

namespace samplehost {

headless::HeadlessBackend& ConsoleContext::headless() const {
  if (!machine.headless)
    throw RequestError("only the headless back end can do this; on a desktop use a tool from outside (xdotool)");
  return *machine.headless;
}

ConsoleCalls desktopCalls() {
  ConsoleCalls calls;
  addWindowCalls(calls);
  addUserCalls(calls);
  addMachineCalls(calls);
  addPresenceCalls(calls);
  addStatusBarCalls(calls);
  addMenuCalls(calls);
  addPanelCalls(calls);
  return calls;
}

const ConsoleCalls& callsOf(const std::string& kind) {
  static const std::map<std::string, ConsoleCalls> tables = {{"app", appCalls()},   {"window", windowCalls()},
                                                             {"text", textCalls()}, {"status", statusCalls()},
                                                             {"host", hostCalls()}, {"desktop", desktopCalls()}};
  const auto found = tables.find(kind);
  if (found == tables.end())
    throw RequestError(fmt::format(
        "no target is called \"{}\"; there are app, window:ID, text:ID, status:NUMBER, host, desktop", kind));
  return found->second;
}

}  // namespace samplehost
