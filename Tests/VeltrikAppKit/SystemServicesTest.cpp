#include <limits>
#include <sstream>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/LoginItem.h"
#include "Tests/ScratchFolder.h"
#include "Tests/VeltrikAppKit/PluginTest.h"
#include "VeltrikAppKit/Protocols/VeltrikStatusBarItemProtocol.h"

namespace veltrik {
namespace {

namespace fs = std::filesystem;

class SystemServicesTest : public PluginTest {
 protected:
  fs::path autostart() const { return desktop.folders().config / "autostart"; }
  fs::path entry() const { return autostart() / "com.brenholt.macos.mirelo.startuplauncher.desktop"; }
  /// The keys of the entry's only group.
  std::map<std::string, std::string> keys() const {
    std::istringstream text(readText(entry()));
    std::string line;
    std::getline(text, line);
    EXPECT_EQ(line, "[Desktop Entry]");
    std::map<std::string, std::string> found;
    while (std::getline(text, line)) found[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
    return found;
  }
};

TEST_F(SystemServicesTest, ABadgeIsACountOrACallForAttention) {
  using platform::port::DockBadge;
  struct Row {
    std::optional<std::string> label;
    DockBadge shown;
  };
  const DockBadge none, attention{std::nullopt, true};
  const auto count = [](std::int64_t number) { return DockBadge{number, false}; };
  for (const Row& row : {Row{"3", count(3)}, Row{"", none}, Row{"0", count(0)}, Row{std::nullopt, none},
                         Row{"99+", count(99)}, Row{"  7 ", count(7)}, Row{"N", attention}, Row{"새 글", attention},
                         Row{"   ", none}, Row{"-1", attention}, Row{"+", attention}, Row{"1.5", attention},
                         Row{"99999999999999999999", count(std::numeric_limits<std::int64_t>::max())}}) {
    desktop.journal().take();
    appKit->setBadgeLabel(row.label);
    EXPECT_EQ(desktop.dock()->badge(), row.shown) << row.label.value_or("nothing");
    EXPECT_EQ(desktop.journal().count("dock: badge"), 1U) << "once for each call";
  }
}

TEST_F(SystemServicesTest, EveryFileSchemeIsLeftOutOfAPath) {
  const std::string here = fs::current_path().native();
  const std::string bytes = "/tmp/\xFF\xC3( \n%41";
  for (const auto& [given, asked] :
       std::vector<std::pair<std::string, std::string>>{{"/tmp/a.txt", "/tmp/a.txt"},
                                                        {"file:///tmp/a.txt", "/tmp/a.txt"},
                                                        {"/tmp/file://b/c", "/tmp/b/c"},
                                                        {"file://file:///x", "/x"},
                                                        {"FILE:///x", here + "/FILE:///x"},
                                                        {"/tmp/a%20b#?.txt", "/tmp/a%20b#?.txt"},
                                                        {"/tmp/한글 문서.txt", "/tmp/한글 문서.txt"},
                                                        {bytes, bytes},
                                                        {"--help", here + "/--help"}}) {
    desktop.journal().take();
    appKit->openFileAtPath(given);
    appKit->openInFinderAtPath(given);
    EXPECT_EQ(desktop.journal().take(), (std::vector<std::string>{"files: open " + asked, "files: reveal " + asked}));
  }
}

TEST_F(SystemServicesTest, WhatCannotBeOpenedIsLogged) {
  appKit->openFileAtPath("");
  appKit->openFileAtPath(std::string("/tmp/a\0b", 8));
  appKit->openInFinderAtPath(std::string("/tmp/a\0b", 8));
  EXPECT_EQ(desktop.journal().count("files:"), 0U);
  EXPECT_EQ(log.size(), 3U);
  desktop.faults().openingFails = true;
  appKit->openFileAtPath("/tmp/a\nb");
  EXPECT_EQ(log.size(), 3U) << "only when the desktop has answered";
  desktop.settle();
  EXPECT_EQ(log.back(), "file:///tmp/a%0Ab can't be opened: nobody opens files here");
}

TEST_F(SystemServicesTest, LaunchAtLoginGoesOnAndOff) {
  for (int round = 0; round < 2; ++round) {
    appKit->setAutoLaunchApp(true);
    const auto entryKeys = keys();
    EXPECT_EQ(entryKeys.at("Type"), "Application");
    EXPECT_EQ(entryKeys.at("Name"), "Mirelo");
    EXPECT_EQ(entryKeys.at("Exec"), '"' + fs::read_symlink("/proc/self/exe").native() + '"');
    EXPECT_FALSE(entryKeys.contains("Hidden"));
    appKit->setAutoLaunchApp(false);
    appKit->setAutoLaunchApp(false);
    EXPECT_TRUE(fs::is_empty(autostart())) << "no entry, and nothing beside it";
  }
  EXPECT_TRUE(log.empty());
}

TEST_F(SystemServicesTest, OffOverrulesTheEntryForAllUsers) {
  const fs::path system = desktop.folders().systemConfig.front() / "autostart" / entry().filename();
  const std::string forAll = "[Desktop Entry]\nType=Application\nName=Mirelo\nExec=mirelo\n";
  writeText(system, forAll);
  appKit->setAutoLaunchApp(false);
  EXPECT_EQ(keys().at("Hidden"), "true");
  appKit->setAutoLaunchApp(true);
  EXPECT_FALSE(keys().contains("Hidden"));
  EXPECT_EQ(readText(system), forAll);
}

TEST_F(SystemServicesTest, AnEntryThatCannotBeWrittenIsLogged) {
  writeText(autostart(), "a file where the folder should be");
  appKit->setAutoLaunchApp(true);
  appKit->setAutoLaunchApp(false);
  EXPECT_EQ(readText(autostart()), "a file where the folder should be");
  ASSERT_FALSE(log.empty());
  EXPECT_THAT(log.front(), testing::HasSubstr("The login item can't be set: "));
  EXPECT_THROW(platform::setLoginItemEnabled({"id", "Name", "/tmp/\xFF"}, true), platform::CocoaError);
}

TEST_F(SystemServicesTest, AFileTypeHasTheThemesIconOrOneOfOurs) {
  desktop.fileIcons()->setTheme({{"image/png", 0xFF112233}, {"xyz", 0xFF445566}});
  const auto colour = [&](const std::string& type) { return appKit->fileIconForType(type)->pixels.at(0); };
  for (const auto& [type, expected] : std::map<std::string, std::uint32_t>{{"public.png", 0xFF112233},
                                                                           {"Public.PNG", 0xFF112233},
                                                                           {"image/png", 0xFF112233},
                                                                           {"xyz", 0xFF445566},
                                                                           {".XYZ", 0xFF445566}})
    EXPECT_EQ(colour(type), expected) << type;
  const auto other = appKit->fileIconForType("com.adobe.pdf");
  for (const char* type : {"pdf", "PDF", ".pdf", "zzz", "", "public.folder", "tar.gz", "a/b", "\xFF\n", "../../etc"}) {
    const auto icon = appKit->fileIconForType(type);
    ASSERT_TRUE(icon) << type;
    EXPECT_EQ(icon->width, 32);
    EXPECT_EQ(icon->pixels.size(), 1024U);
    EXPECT_NE(icon->pixels, std::vector<std::uint32_t>(1024)) << type << " is not empty";
  }
  const auto pixels = [&](const char* type) { return appKit->fileIconForType(type)->pixels; };
  EXPECT_EQ(pixels("pdf"), pixels("com.adobe.pdf"));
  EXPECT_NE(pixels("pdf"), pixels("zip"));
  EXPECT_NE(pixels("public.folder"), pixels("zip"));
  desktop.setScreens({{.frame = {0, 0, 1000, 800}, .visibleFrame = {0, 0, 1000, 800}, .scale = 2}});
  EXPECT_EQ(appKit->fileIconForType("pdf")->width, 64) << "as fine as the finest screen";
  EXPECT_EQ(appKit->fileIconForType("pdf")->scale, 2);
}

TEST(NoShellTest, WithoutADesktopShellNothingHappensPanelsAreLeftAndTheIconIsOurs) {
  LogCapture capture;
  headless::HeadlessBackend desktop({.hasShell = false});
  const platform::Session session(desktop);
  const auto appKit = VeltrikAppKit::make();
  appKit->setBadgeLabel("3");
  appKit->openFileAtPath("/tmp/a");
  appKit->openInFinderAtPath("/tmp/a");
  EXPECT_EQ(capture.lines,
            (std::vector<std::string>{"file:///tmp/a can't be opened: this desktop has no programs for it",
                                      "file:///tmp/a can't be shown: this desktop has no programs for it"}));
  EXPECT_TRUE(appKit->fileIconForType("pdf"));

  const auto item = appKit->createStatusBarItemWithImageName("any");
  ASSERT_TRUE(item);
  item->addMenuItemWithTitle("line", 1, "", [] {});
  item->addSeparator();
  item->updateStatusBarItemEnabled(false, 1);
  item->updateStatusBarItemWithImageName("other");

  capture.lines.clear();
  std::vector<std::string> told;
  appKit->showOpenPanelWithCompletion([&](const auto&) { told.push_back("opened"); });
  appKit->showSavePanel("a", std::nullopt, [&](const auto& place) { told.push_back(place ? "saved" : "nothing"); });
  desktop.settle();
  EXPECT_THAT(told, ElementsAre("nothing"));
  EXPECT_THAT(capture.lines, testing::Each(testing::HasSubstr("this machine has none")));
}

}  // namespace
}  // namespace veltrik
