#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Programs/SampleHost/CallTable.h"
#include "Programs/SampleHost/ChatWindow.h"
#include "Programs/SampleHost/Host.h"
#include "Programs/SampleHost/Machine.h"
#include "Programs/SampleHost/OpenWindows.h"
#include "Programs/SampleHost/SearchWindow.h"

namespace samplehost {

/// What the calls of the console work on. Main thread.
struct ConsoleContext {
  Host& host;
  Machine& machine;
  OpenWindows<ChatWindow>& chats;
  OpenWindows<SearchWindow>& searches;
  /// The identifier in the request's target ("main" of "window:main"); empty for the other targets.
  std::string identifier;
  /// Runs after the answer was written: what the user does may take as long as the application's own loops do.
  std::vector<std::function<void()>>& afterAnswer;

  /// Throws RequestError where there is no simulated user.
  headless::HeadlessBackend& headless() const;
};

using ConsoleCalls = CallTable<ConsoleContext>;

/// One table a kind of target: "app", "window", "text", "status", "host", "desktop".
ConsoleCalls appCalls();
ConsoleCalls windowCalls();
ConsoleCalls textCalls();
ConsoleCalls statusCalls();
ConsoleCalls hostCalls();
ConsoleCalls desktopCalls();
/// Makes a status bar item that the host keeps; its number.
std::int64_t createStatusItem(ConsoleContext& context, const std::string& imageName);
/// Parts of "desktop": windows of the model, the simulated user and machine, the status bar, menus and what is dragged
/// or pasted, file panels.
void addWindowCalls(ConsoleCalls& calls);
void addUserCalls(ConsoleCalls& calls);
void addMachineCalls(ConsoleCalls& calls);
void addMenuCalls(ConsoleCalls& calls);
void addPanelCalls(ConsoleCalls& calls);
void addPresenceCalls(ConsoleCalls& calls);
/// A part of "host".
void addSearchCalls(ConsoleCalls& calls);
void addStatusBarCalls(ConsoleCalls& calls);

/// Throws RequestError for a name that no target has.
const ConsoleCalls& callsOf(const std::string& kind);

}  // namespace samplehost
