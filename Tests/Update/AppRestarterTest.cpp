// An update from its download to the relauncher's start, and everything that can stop it: what stands in the installed
// place afterwards, what is left, and what the log says.

#include "VeltrikAppKit/AppRestarter.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Tests/Update/UpdateFixture.h"

namespace veltrik {
namespace {

namespace filesystem = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string kFlow = "[Mirelo AppRestarter] ";

class AppRestarterTest : public testing::Test {
 protected:
  std::string version() const { return readText(bench.installed() / "Contents/Resources/text"); }
  void expectUntouched() const {
    EXPECT_EQ(treeOf(bench.installed()), before);
    EXPECT_FALSE(bench.openTold());
  }
  void expectInstalled() const {
    EXPECT_EQ(treeOf(bench.installed()), treeOf(bench.root / "packed/Mirelo.app"));
    EXPECT_THAT(namesIn(bench.root / "install"), ElementsAre("Mirelo.app"));
  }

  const UpdateBench bench;
  const std::map<std::string, std::string> before = treeOf(bench.installed());
  LogCapture log;
};

TEST_F(AppRestarterTest, InstallsAndStartsTheRelauncherStepByStep) {
  bench.makeUpdate(bench.archive());
  const std::string folder = "file://" + bench.downloads().native() + "/";
  const std::string installed = "file://" + bench.installed().native() + "/";
  const std::string location = "file://" + bench.archive().native();
  const std::string arguments = "[\"" + folder + "MireloRelauncher.app\", \"--args\", \"-t\", \"" +
                                bench.installed().native() + "\", \"-pid\", \"" + std::to_string(getpid()) + "\"]";
  const auto lines = runUpdate(location);
  EXPECT_THAT(
      lines,
      ElementsAre(kFlow + "start unzip " + location, "[Mirelo AppRestarter] process start launchPath = /usr/bin/unzip",
                  "[Mirelo AppRestarter] process start arguments = [\"" + bench.archive().native() + "\"]",
                  AllOf(StartsWith("[mirelo apprestarter] process succeed. result = Archive:  "),
                        HasSubstr("Mirelo.app/Contents/Info.plist")),
                  kFlow + "find app in unziped files " + folder, kFlow + "findApp check file " + folder + "Mirelo.app/",
                  kFlow + "found app " + folder + "Mirelo.app/", kFlow + "unzip succeed " + location,
                  kFlow + "now will install downloaded bundle and restart",
                  kFlow + "installAndRestart> installedAppBundle, backupPath = " + installed,
                  kFlow + "installAndRestart> will relaunch copyed bundle, launcherPath = " + folder,
                  kFlow + "installAndRestart> will relaunch copyed bundle, bundlePath = " + bench.installed().native(),
                  kFlow + "relaunch> will open MireloRelauncher.app arguments = " + arguments));
  EXPECT_EQ(bench.openTold(), folder + "MireloRelauncher.app\n--args\n-t\n" + bench.installed().native() + "\n-pid\n" +
                                  std::to_string(getpid()) + "\n");
  expectInstalled();
  EXPECT_THAT(namesIn(bench.downloads()), ElementsAre("MireloRelauncher.app", "update.zip"));
}

struct NameRow {
  const char* name;
  const char* archive;
  /// Another archive beside it that its name would match, read as a pattern.
  const char* other;
};

class NameTest : public AppRestarterTest, public testing::WithParamInterface<NameRow> {};

TEST_P(NameTest, IsTakenAsItIs) {
  const filesystem::path archive = bench.downloads() / GetParam().archive;
  writeText(bench.root / "packed/Wrong.app/Contents/Info.plist", "");
  if (*GetParam().other != '\0') bench.pack(bench.downloads() / GetParam().other);
  bench.makeUpdate(archive);
  for (const std::string& location : {archive.native(), platform::URL::fileURL(archive.native()).absoluteString()}) {
    bench.makeInstalled();
    EXPECT_THAT(runUpdate(location), Contains(kFlow + "unzip succeed " + location));
    expectInstalled();
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, NameTest,
                         testing::Values(NameRow{"Dash", "-x.zip", ""}, NameRow{"Class", "a[1].zip", "a1.zip"},
                                         NameRow{"Star", "*.zip", "b.zip"}, NameRow{"Question", "a?.zip", "ab.zip"},
                                         NameRow{"Backslash", "a\\*.zip", "a*.zip"},
                                         NameRow{"Blanks", " two  blanks .zip", ""},
                                         NameRow{"Hangul", "새 버전 (2).zip", ""}, NameRow{"Quotes", "'\"$(x).zip", ""},
                                         NameRow{"Percent", "50%25.zip", ""},
                                         NameRow{"InAFolder", "a[b] 폴더/-update.zip", ""}),
                         [](const auto& row) { return row.param.name; });

TEST_F(AppRestarterTest, ATextThatIsNoLocationOfAFileIsNotFollowed) {
  for (const char* location : {"", "update.zip", "file:///tmp/a b.zip", "https://example.com/update.zip"})
    EXPECT_THAT(runUpdate(location), IsEmpty()) << location;
  expectUntouched();
}

/// What the download folder holds, and where the flow ends.
struct StopRow {
  const char* name;
  std::function<void(const UpdateBench&)> prepare;
  std::vector<std::string> lines;  ///< of the flow, behind the ones about the tool; "@" stands for the folder
};

void packOnly(const UpdateBench& bench, const std::function<void(const filesystem::path&)>& fill) {
  filesystem::remove_all(bench.root / "packed");
  filesystem::create_directories(bench.root / "packed");
  fill(bench.root / "packed");
  bench.pack(bench.archive());
}

const std::string kBadStatus = "[Mirelo AppRestarter] The process fail to operate. (terminationStatus != 0)";
const std::string kNoData = "[mirelo apprestarter] the process fail to operate. (can't get data from pipe)";

class StopTest : public AppRestarterTest, public testing::WithParamInterface<StopRow> {};

TEST_P(StopTest, NothingIsChanged) {
  GetParam().prepare(bench);
  auto lines = runUpdate(bench.archive());
  ASSERT_GE(lines.size(), 3);
  lines.erase(lines.begin(), lines.begin() + 3);
  if (lines.front().starts_with("[mirelo apprestarter] process succeed.")) lines.erase(lines.begin());
  std::vector<std::string> expected = GetParam().lines;
  expected.push_back(kFlow + "unzip succeed " + bench.archive().native());
  for (std::string& line : expected)
    if (const auto at = line.find('@'); at != std::string::npos)
      line.replace(at, 1, "file://" + bench.downloads().native() + "/");
  EXPECT_THAT(lines, ElementsAreArray(expected));
  expectUntouched();
  EXPECT_THAT(namesIn(bench.root / "install"), ElementsAre("Mirelo.app"));
}

const std::string kLooking = kFlow + "find app in unziped files @";
const std::string kCheck = kFlow + "findApp check file @";
const std::string kFailed = kFlow + "findApp failed";

INSTANTIATE_TEST_SUITE_P(
    Rows, StopTest,
    testing::Values(
        StopRow{"NoArchive", [](const UpdateBench& b) { filesystem::create_directories(b.downloads()); }, {kBadStatus}},
        StopRow{"NotAnArchive", [](const UpdateBench& b) { writeText(b.archive(), "PK text"); }, {kBadStatus}},
        StopRow{"CutOff",
                [](const UpdateBench& b) {
                  b.makeUpdate(b.archive());
                  filesystem::resize_file(b.archive(), filesystem::file_size(b.archive()) - 30);
                },
                {kBadStatus}},
        StopRow{"NoApplication",
                [](const UpdateBench& b) {
                  packOnly(b, [](const auto& to) {
                    writeText(to / "Mirelo.app", "a file");
                    writeText(to / "Other.App/Contents/Info.plist", "");
                    writeText(to / "XRelauncherY.app/Contents/Info.plist", "");
                    writeText(to / "app/x", "");
                  });
                },
                {kLooking, kCheck + "Mirelo.app", kCheck + "Other.App/", kCheck + "XRelauncherY.app/", kCheck + "app/",
                 kCheck + "update.zip", kFailed}},
        StopRow{"ALinkToAnApplication",
                [](const UpdateBench& b) {
                  packOnly(b, [&](const auto& to) { filesystem::create_symlink(b.installed(), to / "Linked.app"); });
                },
                {kLooking, kCheck + "Linked.app", kCheck + "update.zip", kFailed}},
        StopRow{"NotABundle",
                [](const UpdateBench& b) {
                  packOnly(b, [](const auto& to) { writeText(to / "Mirelo.app/Contents/other", ""); });
                },
                {kLooking, kCheck + "Mirelo.app/", kFlow + "found app @Mirelo.app/"}},
        StopRow{"WouldAsk",
                [](const UpdateBench& b) {
                  packOnly(b, [](const auto& to) {
                    UpdateBench::makeVersion(to / "Mirelo.app", "2.0");
                    writeText(to / "README", "new");
                  });
                  writeText(b.downloads() / "README", "the user's own");
                },
                {kBadStatus}}),
    [](const auto& row) { return row.param.name; });

TEST_F(AppRestarterTest, TheFirstOfTwoApplicationsIsTaken) {
  packOnly(bench, [](const auto& to) {
    UpdateBench::makeVersion(to / "B.app", "3.0");
    UpdateBench::makeVersion(to / "A.app", "2.0");
  });
  runUpdate(bench.archive());
  EXPECT_EQ(version(), "version 2.0");
}

TEST_F(AppRestarterTest, ABackupThatAnEarlierRunLeftStopsIt) {
  bench.makeUpdate(bench.archive());
  writeText(bench.backup() / "kept", "this");
  const auto lines = runUpdate(bench.archive());
  EXPECT_EQ(lines.back(), kFlow + "installAndRestart> failed to copy backup file");
  expectUntouched();
  EXPECT_THAT(namesIn(bench.root / "install"), ElementsAre("Mirelo.app", "Mirelo.app.backup"));
  EXPECT_EQ(readText(bench.backup() / "kept"), "this");
}

TEST_F(AppRestarterTest, AnotherProcessThatInstallsBesideStopsIt) {
  bench.makeUpdate(bench.archive());
  const platform::FileDescriptor folder(open((bench.root / "install").c_str(), O_RDONLY | O_DIRECTORY));
  ASSERT_EQ(flock(folder.get(), LOCK_EX), 0);
  EXPECT_EQ(runUpdate(bench.archive()).back(), kFlow + "installAndRestart> failed to copy backup file");
  expectUntouched();
}

TEST_F(AppRestarterTest, WhatAnEarlierRunUnpackedIsNotMixedWithTheUpdate) {
  bench.makeUpdate(bench.archive());
  UpdateBench::makeVersion(bench.downloads() / "Mirelo.app", "1.5");
  runUpdate(bench.archive());
  expectInstalled();
}

TEST_F(AppRestarterTest, TheInstalledBundleIsNeverUnpackedOver) {
  const auto archive = bench.root / "install/update.zip";
  bench.makeUpdate(archive);
  const auto lines = runUpdate(archive);
  EXPECT_THAT(lines, ElementsAre(kFlow + "start unzip file://" + archive.native(),
                                 kFlow + "unzip succeed " + archive.native()));
  expectUntouched();
}

TEST_F(AppRestarterTest, AProgramOutsideABundleIsNotReplaced) {
  bench.makeUpdate(bench.archive());
  platform::Bundle::setMainForTesting({});
  EXPECT_EQ(runUpdate(bench.archive()).back(), kFlow + "installAndRestart> backupPath is not valid");
  expectUntouched();
  EXPECT_TRUE(filesystem::exists(platform::Bundle::programPath()));
}

TEST_F(AppRestarterTest, ALinkToTheInstalledBundleIsNotUnpackedThrough) {
  bench.makeUpdate(bench.archive());
  filesystem::create_directory_symlink(bench.installed(), bench.downloads() / "Mirelo.app");
  runUpdate(bench.archive());
  expectInstalled();
}

TEST_F(AppRestarterTest, ASymbolicLinkToTheInstalledBundleStays) {
  bench.makeUpdate(bench.archive());
  filesystem::create_directories(bench.root / "applications");
  filesystem::create_directory_symlink(bench.installed(), bench.root / "applications/Mirelo.app");
  platform::Bundle::setMainForTesting(bench.root / "applications/Mirelo.app");
  runUpdate(bench.archive());
  expectInstalled();
  EXPECT_EQ(readText(bench.root / "applications/Mirelo.app/Contents/Resources/text"), "version 2.0");
  EXPECT_TRUE(filesystem::is_symlink(bench.root / "applications/Mirelo.app"));
}

TEST_F(AppRestarterTest, TheEnvironmentDoesntChangeWhatTheToolDoes) {
  bench.makeUpdate(bench.archive());
  for (const char* options : {"-d /tmp", "-l", "-qq", "-x *"}) {
    setenv("UNZIP", options, 1);
    setenv("UNZIPOPT", options, 1);
    setenv("LC_ALL", "C", 1);
    bench.makeInstalled();
    runUpdate(bench.archive());
    for (const char* variable : {"UNZIP", "UNZIPOPT", "LC_ALL"}) unsetenv(variable);
    expectInstalled();
  }
}

TEST_F(AppRestarterTest, ALongListOfFilesIsReadWhileTheToolWrites) {
  packOnly(bench, [](const auto& to) {
    UpdateBench::makeVersion(to / "Mirelo.app", "2.0");
    for (int i = 0; i < 3000; ++i) writeText(to / "Mirelo.app/Contents/Resources/many" / std::to_string(i), "x");
  });
  runUpdate(bench.archive());
  expectInstalled();
}

struct ToolRow {
  const char* name;
  const char* script;  ///< null: there is none
  std::vector<std::string> lines;
  double silence = 60;
};

class ToolTest : public AppRestarterTest, public testing::WithParamInterface<ToolRow> {};

TEST_P(ToolTest, EndsTheFlow) {
  bench.makeUpdate(bench.archive());
  const auto tool = bench.root / "tools/unzip";
  if (GetParam().script) {
    writeText(tool, std::string("#!/bin/sh\n") + GetParam().script + "\n");
    filesystem::permissions(tool, filesystem::perms(0755));
  }
  const platform::SystemTools::Replacement replacement("/usr/bin/unzip", tool);
  auto lines = runUpdate(bench.archive(), GetParam().silence);
  lines.erase(lines.begin(), lines.begin() + 3);
  EXPECT_EQ(lines.front(), GetParam().lines.front());
  EXPECT_EQ(lines.back(), kFlow + "unzip succeed " + bench.archive().native());
  EXPECT_EQ(lines.size(), GetParam().lines.size() + 1);
  expectUntouched();
}

INSTANTIATE_TEST_SUITE_P(Rows, ToolTest,
                         testing::Values(ToolRow{"IsMissing", nullptr, {kBadStatus}},
                                         ToolRow{"Silent", "exit 0", {kNoData}},
                                         ToolRow{"NotUTF8", "printf '\\377\\376'", {kNoData}},
                                         ToolRow{"Fails", "echo text; exit 3", {kBadStatus}},
                                         ToolRow{"IsKilled", "echo text; kill -9 $$", {kBadStatus}},
                                         ToolRow{"Warns", "echo text; exit 1", {kBadStatus}},
                                         ToolRow{"Hangs", "echo text; sleep 1000; sleep 1000", {kBadStatus}, 0.3}),
                         [](const auto& row) { return row.param.name; });

TEST_F(AppRestarterTest, AStepThatIsToComeIsLeftOutWhenTheRestarterGoes) {
  bench.makeUpdate(bench.archive());
  headless::HeadlessBackend desktop;
  const platform::Session session(desktop);
  AppRestarter::make()->restart(bench.archive());
  desktop.settle();
  EXPECT_THAT(log.lines.back(), StartsWith("[mirelo apprestarter] process succeed."));
  expectUntouched();
}

TEST_F(AppRestarterTest, OfTwoRequestsOneInstalls) {
  bench.makeUpdate(bench.archive());
  headless::HeadlessBackend desktop;
  const platform::Session session(desktop);
  for (const bool firstStays : {false, true}) {
    SCOPED_TRACE(firstStays);
    bench.makeInstalled();
    auto first = AppRestarter::make();
    first->restart(bench.archive());
    if (!firstStays) first.reset();
    const auto second = AppRestarter::make();
    second->restart(bench.archive());
    desktop.settle();
    expectInstalled();
  }
}

TEST_F(AppRestarterTest, StartsTheProgramOnceMore) {
  writeText(bench.installed() / "Contents/Linux/Mirelo", "#!/bin/sh\necho \"$#\" > \"$0.told\"\n");
  AppRestarter::make()->appDidTerminated({});
  UpdateBench::waitForStarted();
  EXPECT_EQ(readText(bench.installed() / "Contents/Linux/Mirelo.told"), "0\n");
}

}  // namespace
}  // namespace veltrik
