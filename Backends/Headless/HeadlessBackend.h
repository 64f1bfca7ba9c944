#pragma once

#include "Backends/Headless/Faults.h"
#include "Backends/Headless/HeadlessApplications.h"
#include "Backends/Headless/HeadlessBroadcast.h"
#include "Backends/Headless/HeadlessClipboard.h"
#include "Backends/Headless/HeadlessDock.h"
#include "Backends/Headless/HeadlessFileIcons.h"
#include "Backends/Headless/HeadlessFileOpener.h"
#include "Backends/Headless/HeadlessFilePanels.h"
#include "Backends/Headless/HeadlessInputMethod.h"
#include "Backends/Headless/HeadlessLoop.h"
#include "Backends/Headless/HeadlessMenus.h"
#include "Backends/Headless/HeadlessPresence.h"
#include "Backends/Headless/HeadlessText.h"
#include "Backends/Headless/HeadlessTray.h"
#include "Backends/Headless/HeadlessUser.h"
#include "Backends/Headless/HeadlessWindowHost.h"
#include "Backends/Headless/Journal.h"
#include "Platform/Port/Backend.h"

namespace headless {

struct HeadlessOptions {
  bool hasBroadcast = true;
  bool hasShell = true;  ///< a dock, a file manager, file panels, an icon theme, a status bar
  bool hasMenus = true;
};

/// A desktop in memory: the same every time, with a clock of its own, a user that does what a test says, and a journal
/// of everything the application asked for.
///
///     HeadlessBackend desktop;
///     Session session(desktop);
///     auto window = NSWindow::make(…);
///     desktop.user().click(…);
///     desktop.advance(0.5);
///
/// Main thread, but `HeadlessLoop::wake`.
class HeadlessBackend final : public platform::port::Backend {
 public:
  explicit HeadlessBackend(HeadlessOptions options = {});
  ~HeadlessBackend() override;
  HeadlessBackend(const HeadlessBackend&) = delete;
  HeadlessBackend& operator=(const HeadlessBackend&) = delete;

  HeadlessLoop& loop() override { return loop_; }
  HeadlessWindowHost& windows() override { return windows_; }
  HeadlessText& text() override { return text_; }
  HeadlessClipboard& clipboard() override { return clipboard_; }
  HeadlessBroadcast* broadcast() override { return options_.hasBroadcast ? &broadcast_ : nullptr; }
  HeadlessApplications* applications() override { return &applications_; }
  HeadlessDock* dock() override { return options_.hasShell ? &dock_ : nullptr; }
  HeadlessFileOpener* fileOpener() override { return options_.hasShell ? &fileOpener_ : nullptr; }
  HeadlessFilePanels* filePanels() override { return options_.hasShell ? &filePanels_ : nullptr; }
  HeadlessFileIcons* fileIcons() override { return options_.hasShell ? &fileIcons_ : nullptr; }
  HeadlessPresence* presence() override { return &presence_; }
  HeadlessTray* tray() override { return options_.hasShell ? &tray_ : nullptr; }
  HeadlessMenus* menus() override { return options_.hasMenus ? &menus_ : nullptr; }
  /// Empty folders of this back end alone, removed with it.
  const platform::port::Folders& folders() const override { return folders_; }

  HeadlessUser& user() { return user_; }
  HeadlessInputMethod& inputMethod() { return inputMethod_; }
  Journal& journal() { return journal_; }
  Faults& faults() { return faults_; }

  /// Lets time pass: runs what is due now and what becomes due meanwhile, in order.
  void advance(double seconds) { loop_.advance(seconds); }
  /// Runs all that is due now.
  void settle() { loop_.settle(); }
  void setScreens(std::vector<platform::port::ScreenInfo> screens) { windows_.setScreens(std::move(screens)); }

 private:
  HeadlessOptions options_;
  Journal journal_;
  Faults faults_;
  HeadlessLoop loop_;
  HeadlessWindowHost windows_{loop_, journal_, faults_};
  HeadlessText text_;
  HeadlessClipboard clipboard_{journal_, faults_};
  HeadlessBroadcast broadcast_{loop_, journal_, faults_};
  HeadlessApplications applications_{journal_};
  HeadlessDock dock_{journal_};
  HeadlessFileOpener fileOpener_{loop_, journal_, faults_};
  HeadlessFilePanels filePanels_{loop_, windows_, journal_};
  HeadlessFileIcons fileIcons_;
  HeadlessPresence presence_{loop_, faults_};
  HeadlessTray tray_{loop_, journal_};
  HeadlessInputMethod inputMethod_{windows_, journal_};
  HeadlessMenus menus_{loop_, journal_};
  HeadlessUser user_{loop_, windows_, inputMethod_, presence_, menus_};
  platform::port::Folders folders_;
};

}  // namespace headless
