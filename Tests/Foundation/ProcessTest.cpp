// Programs that are run, waited for, or set off on their own.

#include "Platform/Foundation/Process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "Platform/Foundation/ApplicationProcess.h"
#include "Platform/Foundation/Bundle.h"
#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/SystemTools.h"
#include "Tests/Foundation/ApplicationFixture.h"

namespace platform {
namespace {

using std::chrono::steady_clock;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

std::string text(const Process& process) {
  return std::string(textOf(process.standardOutput()));
}

/// Asks again and again until the condition holds, ten seconds at most.
template <class Condition>
bool eventually(const Condition& condition) {
  const auto limit = steady_clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (steady_clock::now() > limit) return false;
    std::this_thread::yield();
  }
  return true;
}

struct ShellRow {
  const char* name;
  const char* script;
  int status;
  const char* output;
};

class ShellTest : public testing::TestWithParam<ShellRow> {};

TEST_P(ShellTest, IsRunAndHeard) {
  Process process;
  process.setLaunchPath("/bin/sh");
  process.setArguments({"-c", GetParam().script, "first argument", "두 번째 $HOME `x` \"q\""});
  process.setEnvironment({"COLOUR=blue", "PATH=/usr/bin:/bin"});
  process.setCurrentDirectory("/usr");
  process.captureStandardOutput(1 << 20);
  process.setSilenceLimit(20);
  process.launch();
  process.waitUntilExit();
  EXPECT_EQ(process.terminationStatus(), GetParam().status);
  EXPECT_EQ(text(process), GetParam().output);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ShellTest,
    testing::Values(ShellRow{"Exits", "exit 3", 3, ""}, ShellRow{"IsKilled", "kill -TERM $$", 143, ""},
                    ShellRow{"ItsArgumentsAreTakenAsTheyAre", "printf %s \"$1\"", 0, "두 번째 $HOME `x` \"q\""},
                    ShellRow{"HasOnlyTheGivenEnvironment", "printf %s \"$COLOUR$HOME\"", 0, "blue"},
                    ShellRow{"HasItsFolder", "pwd", 0, "/usr\n"},
                    ShellRow{"HasNothingToRead", "read answer || echo nothing", 0, "nothing\n"},
                    ShellRow{"HasNoTerminal", "(: </dev/tty) 2>/dev/null || echo none", 0, "none\n"},
                    ShellRow{"HasNoOtherDescriptors", "ls /proc/self/fd | wc -l", 0, "4\n"},
                    ShellRow{"LeavesAChildWithItsOutput", "sleep 1000 & printf done", 0, "done"}),
    [](const auto& row) { return row.param.name; });

TEST(Process, OutputLargerThanAPipeIsTakenWhileTheChildRuns) {
  Process process;
  process.setLaunchPath("/bin/sh");
  process.setArguments({"-c", "yes | head -c 3000000"});
  process.captureStandardOutput(4'000'000);
  process.launch();
  process.waitUntilExit();
  EXPECT_EQ(process.terminationStatus(), 0);
  EXPECT_EQ(process.standardOutput().size(), 3'000'000);
}

struct EndedRow {
  const char* name;
  const char* script;
};

class EndedTest : public testing::TestWithParam<EndedRow> {};

TEST_P(EndedTest, ItAndAllThatItStartedAreEnded) {
  const ScratchFolder folder;
  Process process;
  process.setLaunchPath("/bin/sh");
  process.setArguments({"-c", "sleep 1000 & echo $! > \"$0\"; " + std::string(GetParam().script), folder / "pid"});
  process.captureStandardOutput(100'000);
  process.setSilenceLimit(0.2);
  process.launch();
  process.waitUntilExit();
  EXPECT_EQ(process.terminationStatus(), 128 + SIGKILL);
  const int descendant = std::stoi(readText(folder / "pid"));
  EXPECT_TRUE(eventually([&] {
    const std::string stat = readText("/proc/" + std::to_string(descendant) + "/stat");
    return stat.empty() || stat.find(") Z") != std::string::npos;
  }));
}

INSTANTIATE_TEST_SUITE_P(Rows, EndedTest,
                         testing::Values(EndedRow{"Silent", "while :; do wait; done"},
                                         EndedRow{"Stopped", "kill -STOP $$"}, EndedRow{"Endless", "exec yes"}),
                         [](const auto& row) { return row.param.name; });

struct UnstartableRow {
  const char* name;
  std::string path, argument, folder;
};

class UnstartableTest : public testing::TestWithParam<UnstartableRow> {};

TEST_P(UnstartableTest, IsToldByAnError) {
  Process process;
  process.setLaunchPath(GetParam().path);
  process.setArguments({GetParam().argument});
  process.setCurrentDirectory(GetParam().folder);
  EXPECT_THROW(process.launch(), CocoaError);
  EXPECT_THROW(process.launchDetached(), CocoaError);
}

INSTANTIATE_TEST_SUITE_P(Rows, UnstartableTest,
                         testing::Values(UnstartableRow{"Missing", "/nowhere/at all", "", ""},
                                         UnstartableRow{"NoProgram", "/etc/passwd", "", ""},
                                         UnstartableRow{"AFolder", "/usr", "", ""},
                                         UnstartableRow{"NoFolder", "/bin/true", "", "/nowhere"},
                                         UnstartableRow{"NulByte", "/bin/true", std::string("a\0b", 3), ""}),
                         [](const auto& row) { return row.param.name; });

TEST(Process, ADetachedOneIsNobodysChildAndStandsOnItsOwn) {
  const ScratchFolder folder;
  Process process;
  process.setLaunchPath("/bin/sh");
  process.setArguments({"-c", "pwd > \"$0\"; mv \"$0\" \"$1\"; exec sleep 1000", folder / "new", folder / "told"});
  const pid_t id = process.launchDetached();
  EXPECT_EQ(waitpid(id, nullptr, WNOHANG), -1);
  EXPECT_EQ(getsid(id), id);
  EXPECT_TRUE(eventually([&] { return readText(folder / "told") == "/\n"; }));
  EXPECT_EQ(kill(id, SIGKILL), 0);
}

TEST(SystemTools, TheOpenToolIsTheOneBesideThisProgram) {
  EXPECT_EQ(SystemTools::locationOf("/usr/bin/open"), Bundle::programPath().parent_path() / "open");
  EXPECT_EQ(SystemTools::locationOf("/usr/bin/unzip"), "/usr/bin/unzip");
  const SystemTools::Replacement replacement("/usr/bin/unzip", "/bin/false");
  EXPECT_EQ(SystemTools::locationOf("/usr/bin/unzip"), "/bin/false");
}

TEST(ApplicationProcess, IsStartedFoundByItsBundleAndEnded) {
  const ScratchFolder folder;
  const auto path = folder / "한글 App.app";
  makeApplication(path, "com.example.sleeper", "echo $# \"$1\" > \"$(dirname \"$0\")/told\"; exec sleep 1000");
  makeApplication(folder / "Other.app", "com.example.other", "exec sleep 1000");
  const auto launched = ApplicationProcess::launch(*Bundle::read(path), {"{\"a\": 1}"});
  EXPECT_TRUE(launched.isRunning());
  EXPECT_EQ(launched.bundleIdentifier, "com.example.sleeper");
  EXPECT_TRUE(eventually([&] { return readText(path / "Contents/Linux/told") == "1 {\"a\": 1}\n"; }));
  EXPECT_TRUE(launched.terminate());
  EXPECT_TRUE(eventually([&] { return !launched.isRunning(); }));
  EXPECT_FALSE(launched.terminate());
}

/// A process table as the kernel shows it, made of files.
class TableTest : public testing::Test {
 protected:
  void add(int id, int parent, const std::filesystem::path& program, const std::string& command = "",
           const std::string& name = "name") const {
    const auto entry = folder / std::to_string(id);
    writeText(entry / "cmdline", command);
    std::string fields = std::to_string(id) + " (" + name + ") S " + std::to_string(parent);
    for (int field = 5; field < 22; ++field) fields += " 0";
    writeText(entry / "stat", fields + " " + std::to_string(id * 10) + " 0 0\n");
    std::filesystem::create_symlink(program, entry / "exe");
    const char* const bus = getenv("DBUS_SESSION_BUS_ADDRESS");
    writeText(entry / "environ", bus ? std::string("A=b\0DBUS_SESSION_BUS_ADDRESS=", 29) + bus : "A=b");
  }
  std::vector<ApplicationProcess> listed() const { return ApplicationProcess::all(folder.path()); }

  const ScratchFolder folder;
  const ScratchFolder programs;
};

TEST_F(TableTest, ListsWhatRunsABundlesExecutable) {
  const auto app = programs / "A.app";
  makeApplication(app, "com.example.a", "");
  const std::string program = app / "Contents/Linux/A";
  add(10, 1, program);
  add(11, 10, program);
  add(12, 1, program + " (deleted)", "", "od) S 1 (d");
  add(13, 1, "/bin/dash", std::string("/bin/sh\0", 8) + program + '\0');
  add(14, 1, app / "Contents/Linux/helper");
  add(15, 1, "/bin/dash", "/bin/sh");
  add(16, 1, "/nowhere/B.app/Contents/Linux/B");
  add(17, 1, "/bin/dash", std::string(100'000, 'x'));
  add(19, 1, program);
  writeText(folder / "19/environ", std::string("DBUS_SESSION_BUS_ADDRESS=of another desktop\0", 44));
  writeText(folder / "18/stat", "18 (torn");
  std::filesystem::create_symlink(program, folder / "18/exe");
  writeText(folder / "uptime", "1 2");
  const auto is = [](int id) {
    return AllOf(Field(&ApplicationProcess::id, id), Field(&ApplicationProcess::startTime, id * 10U),
                 Field(&ApplicationProcess::bundleIdentifier, "com.example.a"));
  };
  EXPECT_THAT(listed(), ElementsAre(is(10), is(12), is(13)));
}

TEST_F(TableTest, AnUnreadableTableHasNone) {
  EXPECT_THAT(ApplicationProcess::all(folder / "none"), IsEmpty());
}

TEST(ApplicationProcess, ANumberThatCameAgainIsAnotherProcess) {
  ApplicationProcess process;
  process.id = getpid();
  process.startTime = 1;
  EXPECT_FALSE(process.isRunning());
  EXPECT_FALSE(process.terminate());
}

}  // namespace
}  // namespace platform
