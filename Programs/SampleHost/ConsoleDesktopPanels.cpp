#include "Programs/SampleHost/ConsoleTargets.h"
#include "Programs/SampleHost/HostArguments.h"

namespace samplehost {

using platform::Dictionary;
using platform::Value;
using platform::port::FilePanelRequest;
using std::string;

namespace {

string nameOf(FilePanelRequest::Kind kind) {
  switch (kind) {
    case FilePanelRequest::Kind::open:
      return "open";
    case FilePanelRequest::Kind::openFolder:
      return "openFolder";
    case FilePanelRequest::Kind::save:
      break;
  }
  return "save";
}

Value filePanel(ConsoleContext& context) {
  auto& panels = *context.headless().filePanels();
  const auto* panel = panels.open();
  if (!panel) return {};
  const auto& state = panels.surfaceOf(*panel).state();
  return Dictionary{{"kind", nameOf(panel->request.kind)},
                    {"multiple", panel->request.multiple},
                    {"name", panel->request.name},
                    {"directory", panel->request.directory},
                    {"level", state.level},
                    {"modal", state.modal}};
}

void requirePanel(bool answered) {
  if (!answered) throw RequestError("no file panel is open");
}

}  // namespace

void addPanelCalls(ConsoleCalls& calls) {
  calls.add("filePanel", filePanel);
  calls.add("chooseFiles", [](ConsoleContext& c, std::vector<string> paths) {
    requirePanel(c.headless().filePanels()->choose(std::move(paths)));
  });
  calls.add("leaveFilePanel", [](ConsoleContext& c) { requirePanel(c.headless().filePanels()->leave()); });
}

}  // namespace samplehost
