#include "Backends/Desktop/DesktopBackend.h"

#include <xcb/xcb.h>

#include <QApplication>
#include <QDir>
#include <QStandardPaths>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Backends/Desktop/DBusBroadcast.h"
#include "Backends/Desktop/DesktopApplications.h"
#include "Backends/Desktop/DesktopClipboard.h"
#include "Backends/Desktop/DesktopDock.h"
#include "Backends/Desktop/DesktopFileIcons.h"
#include "Backends/Desktop/DesktopFileOpener.h"
#include "Backends/Desktop/DesktopFilePanels.h"
#include "Backends/Desktop/DesktopLoop.h"
#include "Backends/Desktop/DesktopMenus.h"
#include "Backends/Desktop/DesktopPresence.h"
#include "Backends/Desktop/DesktopText.h"
#include "Backends/Desktop/DesktopTray.h"
#include "Backends/Desktop/DesktopWindowHost.h"
#include "Backends/Desktop/SelectionReader.h"
#include "Backends/Desktop/SessionBus.h"

namespace desktop {

namespace {

/// Set at exit, when what the toolkit made for its application object is destroyed. A back end that a global of the
/// program owns comes after that, and taking it apart then would be a crash.
bool globalsAreGone = false;

/// The toolkit ends the process when it finds no display, so we look first.
void requireDisplay() {
  xcb_connection_t* probe = xcb_connect(nullptr, nullptr);
  const bool stands = xcb_connection_has_error(probe) == 0;
  xcb_disconnect(probe);
  if (!stands) throw std::runtime_error("no X server answers at the display that DISPLAY names");
}

/// The toolkit's application object, if nobody made one before us.
class Application {
 public:
  explicit Application(const std::string& identifier) {
    if (QCoreApplication::instance()) return;
    requireDisplay();
    qputenv("QT_QPA_PLATFORM", "xcb");
    static int count = 1;
    static char name[] = "mirelo";
    static char* arguments[] = {name, nullptr};
    owned_ = std::make_unique<QApplication>(count, arguments);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setDesktopFileName(QString::fromStdString(identifier));
    QCoreApplication::setApplicationName(QString::fromStdString(identifier));
  }

 private:
  std::unique_ptr<QApplication> owned_;
};

/// The first location is the user's own.
std::vector<std::filesystem::path> systemConfig() {
  std::vector<std::filesystem::path> folders;
  for (const QString& folder : QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation).mid(1))
    folders.emplace_back(folder.toStdString());
  return folders;
}

platform::port::Folders userFolders() {
  const auto folder = [](QStandardPaths::StandardLocation location) {
    return std::filesystem::path(QStandardPaths::writableLocation(location).toStdString());
  };
  return {QDir::homePath().toStdString(),
          folder(QStandardPaths::GenericConfigLocation),
          folder(QStandardPaths::GenericDataLocation),
          folder(QStandardPaths::GenericCacheLocation),
          folder(QStandardPaths::DownloadLocation),
          systemConfig()};
}

/// Deletes what all parts after it have given up.
struct Sweeper {
  ~Sweeper() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
};

}  // namespace

struct DesktopBackend::Parts {
  explicit Parts(const DesktopOptions& options)
      : application(options.identifier),
        windows(options.identifier, selections),
        dock(bus, options.identifier),
        tray(options.identifier),
        folders(userFolders()) {}

  /// Reading the system's fonts takes a third of the time until a window appears, so it begins before the toolkit
  /// starts.
  std::jthread fontConfiguration = DesktopText::readConfiguration();
  Application application;
  DesktopText text{fontConfiguration};
  Sweeper sweeper;
  DesktopLoop loop;
  SelectionReader selections;
  DesktopWindowHost windows;
  DesktopClipboard clipboard{selections};
  SessionBus bus;
  DBusBroadcast broadcast{bus};
  DesktopApplications applications;
  DesktopDock dock;
  DesktopFileOpener fileOpener{bus};
  DesktopFilePanels filePanels{bus};
  DesktopFileIcons fileIcons;
  DesktopPresence presence{bus};
  DesktopTray tray;
  DesktopMenus menus{bus};
  platform::port::Folders folders;
};

DesktopBackend::DesktopBackend(const DesktopOptions& options) : parts_(std::make_unique<Parts>(options)) {
  [[maybe_unused]] static const int registered = std::atexit([] { globalsAreGone = true; });
}

DesktopBackend::~DesktopBackend() {
  if (!globalsAreGone) return;
  std::fputs("The desktop back end is destroyed after the toolkit's globals, so it is left as it is.\n", stderr);
  // Still reachable, for those who look for leaks; volatile, since nobody else reads it.
  [[maybe_unused]] static Parts* volatile left = nullptr;
  left = parts_.release();
}

platform::port::LoopDriver& DesktopBackend::loop() {
  return parts_->loop;
}

platform::port::WindowHost& DesktopBackend::windows() {
  return parts_->windows;
}

platform::port::TextMeasure& DesktopBackend::text() {
  return parts_->text;
}

platform::port::Clipboard& DesktopBackend::clipboard() {
  return parts_->clipboard;
}

platform::port::Broadcast* DesktopBackend::broadcast() {
  return &parts_->broadcast;
}

platform::port::Presence* DesktopBackend::presence() {
  return &parts_->presence;
}

platform::port::Applications* DesktopBackend::applications() {
  return &parts_->applications;
}

platform::port::Dock* DesktopBackend::dock() {
  return &parts_->dock;
}

platform::port::FileOpener* DesktopBackend::fileOpener() {
  return &parts_->fileOpener;
}

platform::port::FilePanels* DesktopBackend::filePanels() {
  return &parts_->filePanels;
}

platform::port::FileIcons* DesktopBackend::fileIcons() {
  return &parts_->fileIcons;
}

platform::port::Tray* DesktopBackend::tray() {
  return &parts_->tray;
}

platform::port::MenuHost* DesktopBackend::menus() {
  return &parts_->menus;
}

const platform::port::Folders& DesktopBackend::folders() const {
  return parts_->folders;
}

}  // namespace desktop
