#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Programs/SampleHost/ChatWindow.h"
#include "Programs/SampleHost/Host.h"
#include "Programs/SampleHost/TourUser.h"
#include "Programs/SampleHost/Transcript.h"

namespace samplehost {

class CardScene;

/// Drives the host through everything the plug-in can do, scene by scene, and checks each. Main thread.
class Tour {
 public:
  /// All are borrowed and outlive the tour. Pictures go into `pictures`; nothing: none are taken.
  Tour(Host& host, Machine& machine, Transcript& transcript, std::optional<std::filesystem::path> pictures);
  ~Tour();

  /// Plays all scenes; the last one ends the application. True when every check held.
  bool run();

 private:
  struct Scene {
    const char* title;
    void (Tour::*play)();
  };
  static const std::vector<Scene>& scenes();

  // Windows (TourWindows.cpp).
  void launch();
  void bindWindow();
  void chrome();
  void dragRegion();
  void resize();
  void levelAndOpacity();
  void minimiseAndZoom();
  void secondWindow();
  // Roles (TourRoles.cpp).
  void attachedWindows();
  void popover();
  void sheet();
  std::shared_ptr<platform::NSWindow> openCard(const std::string& identifier, const platform::Rect& frame,
                                               const std::shared_ptr<CardScene>& scene);
  void pictureOfFamily(const std::string& name, const std::vector<std::shared_ptr<platform::NSWindow>>& backToFront);
  // Events and order (TourEvents.cpp).
  void clicks();
  void focusAndKeys();
  void order();
  // Text (TourText.cpp).
  void typeAndSend();
  void composeHangul();
  void newLine();
  void undoAndRedo();
  // Search field, presence (TourSearch.cpp).
  void search();
  void presence();
  // Menus and files (TourMenus.cpp).
  void contextMenu();
  void pasteFiles();
  void dropFiles();
  // Alerts and file panels (TourAlerts.cpp).
  void alert();
  void sheetAlert();
  void savePanel();
  void openPanel();
  // Application (TourApplication.cpp).
  void notifications();
  void dockMenu();
  void statusBarItem();  // TourServices.cpp
  void reopen();
  void terminate();

  // Other programs (TourCompanion.cpp).
  void companion();
  void update();

  veltrik::VeltrikAppKitWindowHelperProtocol& main();
  std::shared_ptr<platform::NSWindow> mainWindow() const;
  std::string lastMessage() const;
  /// How often the host has heard of `name` from `from`.
  int heard(const std::string& name, const std::string& from) const;
  int posted(const std::string& name) const;
  /// Runs the application until the condition holds; false when it didn't within five seconds.
  static bool wait(const std::function<bool()>& condition);
  void picture(const std::string& name, const std::shared_ptr<platform::NSWindow>& window);
  void menuPicture(const std::string& name);
  void savePicture(const std::string& name, const platform::Bitmap& bitmap);

  Host& host_;
  Machine& machine_;
  Transcript& transcript_;
  std::optional<std::filesystem::path> pictures_;
  int pictureCount_ = 0;
  std::unique_ptr<TourUser> user_;
  std::unique_ptr<ChatWindow> chat_;
  std::vector<HostEvent> heard_;
  std::vector<std::string> posted_;
};

}  // namespace samplehost
