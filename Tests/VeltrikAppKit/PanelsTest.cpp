#include <filesystem>
#include <fstream>

#include "Tests/VeltrikAppKit/PluginTest.h"

namespace veltrik {
namespace {

using platform::URL;
using testing::HasSubstr;

namespace fs = std::filesystem;

/// What the user does in a panel, and what the host's block gets: paths, "nothing", or no call.
class PanelsTest : public PluginTest {
 public:
  using PluginTest::appKit;
  using PluginTest::desktop;
  std::vector<std::string> told;
  std::shared_ptr<NSWindow> window = NSWindow::make({0, 0, 400, 300}, kOrdinaryStyle);

  PanelsTest() {
    window->makeKeyAndOrderFront(nullptr);
    desktop.settle();
    desktop.journal().take();
  }
  headless::HeadlessFilePanels& panels() { return *desktop.filePanels(); }
  std::vector<std::string> asked() {
    std::vector<std::string> lines;
    for (std::string& line : desktop.journal().take())
      if (line.starts_with("panel: ")) lines.push_back(line.substr(7));
    return lines;
  }
  void tell(const std::optional<URL>& place) { told.push_back(place ? place->path() : "nothing"); }

  void openPanel() {
    appKit->showOpenPanelWithCompletion([this](const std::vector<URL>& files) {
      for (const URL& file : files) tell(file);
    });
  }
  void folderPanel(const std::string& folder) {
    appKit->showDownloadPathSavePanel(URL::directoryURL(folder), [this](const URL& chosen) { tell(chosen); });
  }
  void savePanel(const std::string& name, const std::optional<URL>& folder = std::nullopt) {
    appKit->showSavePanel(name, folder, [this](const auto& place) { tell(place); });
    desktop.settle();
  }
};

TEST_F(PanelsTest, AnswerAsTheUserDoes) {
  struct Row {
    const char* name;
    std::function<void(PanelsTest&)> act;
    std::vector<std::string> opened, folder, saved;
  };
  const std::string any = "/tmp/a b#%41 'file://' \"가\"\n\xff.txt";
  const Row rows[] = {
      {"one", [](auto& t) { t.panels().choose({"/a/b"}); }, {"/a/b"}, {"/a/b"}, {"/a/b"}},
      {"any name there is", [&](auto& t) { t.panels().choose({any}); }, {any}, {any}, {any}},
      {"several, in the panel's order",
       [](auto& t) {
         t.panels().choose({"/b", "/a"});
       },
       {"/b", "/a"},
       {"/b"},
       {"/b"}},
      {"the user leaves", [](auto& t) { t.panels().leave(); }, {}, {}, {"nothing"}},
      {"Escape", [](auto& t) { t.desktop.user().key(53); }, {}, {}, {"nothing"}},
      {"closed by code", [](auto&) { NSApplication::shared().keyWindow()->close(); }, {}, {}, {"nothing"}},
      {"an answer of no files", [](auto& t) { t.panels().choose({}); }, {}, {}, {"nothing"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    later([&] {
      EXPECT_EQ(NSApplication::shared().modalWindow(), NSApplication::shared().keyWindow());
      EXPECT_TRUE(window->isInputBlocked());
      row.act(*this);
    });
    openPanel();
    EXPECT_EQ(std::exchange(told, {}), row.opened) << "open";
    later([&] { row.act(*this); });
    folderPanel("/home");
    EXPECT_EQ(std::exchange(told, {}), row.folder) << "folder";
    savePanel("a.txt");
    EXPECT_FALSE(window->isInputBlocked());
    EXPECT_THAT(told, IsEmpty()) << "it doesn't wait";
    row.act(*this);
    desktop.settle();
    EXPECT_EQ(std::exchange(told, {}), row.saved) << "save";
    EXPECT_THAT(NSApplication::shared().windows(), ElementsAre(window));
    EXPECT_TRUE(window->isKeyWindow());
  }
}

TEST_F(PanelsTest, ShowWhatTheyAreToldTo) {
  const std::string downloads = desktop.folders().downloads;
  const auto leave = [this] {
    EXPECT_EQ(NSApplication::shared().modalWindow()->level(), asked().front().starts_with("open folder") ? 8 : 0);
    panels().leave();
  };
  later([&] {
    EXPECT_THAT(asked(), ElementsAre("open several"));
    panels().leave();
  });
  openPanel();
  later(leave);
  folderPanel("/home/someone/내려받기/");
  struct Row {
    const char* name;
    std::optional<URL> folder;
    std::string asked;
  };
  for (const Row& row :
       {Row{"a.txt", URL::directoryURL("/tmp/b c"), "save a.txt in /tmp/b c"},
        Row{"한글 \"100%\" ~#.txt", std::nullopt, "save 한글 \"100%\" ~#.txt in " + downloads},
        Row{"../a/b", std::nullopt, "save .._a_b in " + downloads}, Row{"..", std::nullopt, "save in " + downloads},
        Row{"\xff\n", URL::fileURL("/tmp/\xfe"), "save \xff\n in /tmp/\xfe"}}) {
    savePanel(row.name, row.folder);
    EXPECT_THAT(asked(), ElementsAre(row.asked));
    const auto* panel = panels().open();
    ASSERT_TRUE(panel);
    EXPECT_EQ(panels().surfaceOf(*panel).state().level, 8);
    EXPECT_EQ(panels().surfaceOf(*panel).parent()->nativeHandle(), window->nativeHandle());
    panels().leave();
    desktop.settle();
  }
  EXPECT_TRUE(fs::is_directory(downloads));
}

TEST_F(PanelsTest, WithoutADownloadsFolderTheDesktopChooses) {
  fs::create_directories(desktop.folders().home);
  std::ofstream(desktop.folders().downloads) << "a file where the folder should be";
  savePanel("a.txt");
  EXPECT_THAT(asked(), ElementsAre("save a.txt"));
  EXPECT_THAT(log, ElementsAre(HasSubstr("no folder for downloads")));
}

TEST_F(PanelsTest, AnswerOnceWhateverHappens) {
  savePanel("a.txt");
  savePanel("b.txt");
  panels().choose({"/b"});
  NSApplication::shared().keyWindow()->close();
  desktop.settle();
  panels().leave();
  EXPECT_FALSE(panels().leave());
  desktop.settle();
  EXPECT_THAT(told, ElementsAre("nothing", "nothing"));
}

TEST_F(PanelsTest, ABlockMayAskAgainAndLetGoOfThePlugIn) {
  appKit->showSavePanel("a", std::nullopt, [this](const auto&) {
    later([this] { panels().choose({"/b"}); });
    openPanel();
    appKit.reset();
  });
  desktop.settle();
  panels().choose({"/a"});
  desktop.settle();
  EXPECT_THAT(told, ElementsAre("/b"));
  EXPECT_THAT(NSApplication::shared().windows(), ElementsAre(window));
}

TEST_F(PanelsTest, AModalPanelInsideAnotherEndsAlone) {
  later([&] {
    later([&] { panels().leave(); });
    folderPanel("/");
    EXPECT_THAT(told, IsEmpty());
    panels().choose({"/outer"});
  });
  openPanel();
  EXPECT_THAT(told, ElementsAre("/outer"));
}

}  // namespace
}  // namespace veltrik
