#include <errno.h>
#include <gtest/gtest.h>

#include <optional>

#include "Backends/Headless/HeadlessBackend.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/UndoManager.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Tests/LogCapture.h"
#include "Tests/ScratchFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

class StorageTest : public testing::Test {
 protected:
  fs::path folder() const { return desktop_.folders().config / program_invocation_short_name; }
  fs::path file() const { return folder() / "defaults.json"; }
  /// As the next start of the program.
  void restart() {
    session_.reset();
    session_.emplace(desktop_);
  }

  LogCapture capture_;
  std::vector<std::string>& logged_ = capture_.lines;
  headless::HeadlessBackend desktop_;
  std::optional<Session> session_{desktop_};
};

TEST_F(StorageTest, SettingsOutliveTheProgram) {
  const Dictionary frame{{"text", "{{0, 0}, {1, 1}}"}, {"list", Value::Array{1, 2.5, true}}};
  UserDefaults::standard().set("flag", true);
  UserDefaults::standard().set("frame", frame);
  UserDefaults::standard().set("gone", "soon");
  UserDefaults::standard().set("gone", Value());
  restart();
  EXPECT_TRUE(UserDefaults::standard().boolForKey("flag"));
  EXPECT_EQ(UserDefaults::standard().get("frame"), Value(frame));
  EXPECT_TRUE(UserDefaults::standard().get("gone").isNull());
  EXPECT_FALSE(UserDefaults::standard().boolForKey("frame")) << "not a truth value";
  EXPECT_TRUE(logged_.empty());
  EXPECT_EQ(std::distance(fs::directory_iterator(folder()), {}), 1) << "nothing but the file itself stays";
}

TEST_F(StorageTest, UnreadableSettingsArePutAside) {
  for (const std::string broken : {"", "{", "[1]", "{\"a\":1} x"}) {
    SCOPED_TRACE(broken);
    logged_.clear();
    writeText(file(), broken);
    restart();
    EXPECT_TRUE(UserDefaults::standard().get("a").isNull());
    EXPECT_EQ(readText(file().native() + ".broken"), broken);
    EXPECT_FALSE(logged_.empty());
    UserDefaults::standard().set("a", 2);
    restart();
    EXPECT_EQ(UserDefaults::standard().get("a"), Value(2));
  }
}

TEST_F(StorageTest, AFailingDiskCostsOnlyTheNextStart) {
  writeText(desktop_.folders().config, "a file where the folder should be");
  UserDefaults::standard().set("a", 1);
  EXPECT_EQ(UserDefaults::standard().get("a"), Value(1));
  EXPECT_EQ(logged_.size(), 1u);
  restart();
  EXPECT_TRUE(UserDefaults::standard().get("a").isNull());
}

std::string propertyList(const std::string& body) {
  return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0">)" + body + "</plist>";
}

class BundleTest : public StorageTest {
 protected:
  fs::path bundle(const std::string& name, const std::string& info) {
    const fs::path path = desktop_.folders().home / name;
    writeText(path / "Contents/Info.plist", info);
    return path;
  }
};

TEST_F(BundleTest, TheApplicationsSettingsDontDependOnItsProgramsName) {
  const fs::path path =
      bundle("A.app", propertyList("<dict><key>CFBundleIdentifier</key><string>com.a</string></dict>"));
  Bundle::setMainForTesting(path);
  restart();
  UserDefaults::standard().set("a", 1);
  EXPECT_TRUE(fs::exists(desktop_.folders().config / "com.a/defaults.json"));
  EXPECT_FALSE(fs::exists(folder()));
  Bundle::setMainForTesting({});
}

TEST_F(BundleTest, TellsWhatItsPropertyListSays) {
  const fs::path path =
      bundle("A.bundle", propertyList("<dict><key>CFBundleIdentifier</key><string>com.a</string>"
                                      "<key>CFBundleExecutable</key><string>Tool</string>"
                                      "<key>number</key><integer>3</integer><key>flag</key><true/>"
                                      "<key>list</key><array><string>한</string><real>1.5</real></array>"
                                      "</dict>"));
  writeText(path / "Contents/Resources/images/icon.png", "png");
  const auto opened = Bundle::open(path);
  ASSERT_TRUE(opened);
  EXPECT_EQ(opened->bundleIdentifier(), "com.a");
  EXPECT_EQ(opened->executablePath(), fs::canonical(path) / "Contents/Linux/Tool");
  EXPECT_EQ(opened->info().at("number"), Value(3));
  EXPECT_EQ(opened->info().at("flag"), Value(true));
  EXPECT_EQ(opened->info().at("list"), Value(Value::Array{"한", 1.5}));
  EXPECT_EQ(Bundle::open(path / "../A.bundle"), opened) << "one path, one bundle";
  EXPECT_TRUE(opened->pathForResource("images/icon.png"));
  for (const char* name : {"", "images", "absent", "../Info.plist", "/etc/passwd"})
    EXPECT_FALSE(opened->pathForResource(name)) << name;

  std::string error;
  EXPECT_FALSE(opened->load(&error));
  EXPECT_NE(error.find("Tool"), std::string::npos) << error;
  EXPECT_EQ(opened->symbol("anything"), nullptr);
}

TEST_F(BundleTest, WhatIsNoBundleIsNothing) {
  const std::string good = propertyList("<dict><key>CFBundleIdentifier</key><string>com.b</string></dict>");
  EXPECT_FALSE(Bundle::open(desktop_.folders().home / "absent"));
  EXPECT_FALSE(Bundle::open(bundle("List.bundle", propertyList("<array/>"))));
  EXPECT_FALSE(Bundle::open(bundle("Large.bundle", good + std::string(2 << 20, ' '))));
  for (std::size_t length = 0; length < good.size() - 16; length += 7)
    Bundle::open(bundle("Cut" + std::to_string(length) + ".bundle", good.substr(0, length)));
  EXPECT_TRUE(Bundle::open(bundle("Good.bundle", good)));
}

TEST_F(BundleTest, AnExecutableOutsideTheBundleIsNotNamed) {
  for (const char* name : {"../../../../bin/sh", "/bin/sh", "..", "", "a/b"}) {
    const auto opened = Bundle::open(
        bundle("E" + std::to_string(std::hash<std::string>()(name)) + ".bundle",
               propertyList("<dict><key>CFBundleExecutable</key><string>" + std::string(name) + "</string></dict>")));
    ASSERT_TRUE(opened) << name;
    EXPECT_EQ(opened->executablePath().parent_path(), opened->path() / "Contents/Linux") << name;
    EXPECT_NE(opened->executablePath().filename(), "..") << name;
  }
}

TEST(UndoManager, AStepThatThrowsOrUndoesLeavesTheManagerUsable) {
  UndoManager manager;
  int undone = 0;
  manager.registerUndo(&undone, [&] { ++undone; });
  manager.registerUndo(&undone, [&] {
    manager.undo();  // nothing while one runs
    throw 1;
  });
  EXPECT_THROW(manager.undo(), int);
  EXPECT_EQ(undone, 0);
  manager.undo();
  EXPECT_EQ(undone, 1);
}

}  // namespace
}  // namespace platform
