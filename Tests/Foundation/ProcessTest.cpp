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

TEST(Process, IsRunAsItWasSetUpAndHeard) {
  struct Row {
    const char* name;
    const char* script;
    int status;
    const char* output;
  };
  for (const Row& row : {Row{"exits", "exit 3", 3, ""}, Row{"is killed", "kill -TERM $$", 143, ""},
                         Row{"its arguments are taken as they are", "printf %s \"$1\"", 0, "두 번째 $HOME `x` \"q\""},
                         Row{"has only the given environment", "printf %s \"$COLOUR$HOME\"", 0, "blue"},
                         Row{"has its folder", "pwd", 0, "/usr\n"},
                         Row{"has nothing to read", "read answer || echo nothing", 0, "nothing\n"},
                         Row{"has no terminal", "(: </dev/tty) 2>/dev/null || echo none", 0, "none\n"},
                         Row{"has no other descriptors", "ls /proc/self/fd | wc -l", 0, "4\n"},
                         Row{"leaves a child with its output", "sleep 1000 & printf done", 0, "done"}}) {
    SCOPED_TRACE(row.name);
    Process process;
    process.setLaunchPath("/bin/sh");
    process.setArguments({"-c", row.script, "first argument", "두 번째 $HOME `x` \"q\""});
    process.setEnvironment({"COLOUR=blue", "PATH=/usr/bin:/bin"});
    process.setCurrentDirectory("/usr");
    process.captureStandardOutput(1 << 20);
    process.setSilenceLimit(20);
    process.launch();
    process.waitUntilExit();
    EXPECT_EQ(process.terminationStatus(), row.status);
    EXPECT_EQ(text(process), row.output);
  }
}

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

TEST(Process, OneThatDoesNotEndIsEndedWithAllThatItStarted) {
  for (const std::string ending : {"while :; do wait; done", "kill -STOP $$", "exec yes"}) {
    SCOPED_TRACE(ending);
    const ScratchFolder folder;
    Process process;
    process.setLaunchPath("/bin/sh");
    process.setArguments({"-c", "sleep 1000 & echo $! > \"$0\"; " + ending, folder / "pid"});
    process.captureStandardOutput(100'000);
    process.setSilenceLimit(0.2);
    process.launch();
    process.waitUntilExit();
    EXPECT_EQ(process.terminationStatus(), 128 + SIGKILL);
    const std::string descendant = std::to_string(std::stoi(readText(folder / "pid")));
    EXPECT_TRUE(eventually([&] {
      const std::string stat = readText("/proc/" + descendant + "/stat");
      return stat.empty() || stat.find(") Z") != std::string::npos;
    }));
  }
}

TEST(Process, WhatCannotBeStartedIsToldByAnError) {
  struct Row {
    const char* name;
    std::string path, argument, folder;
  };
  for (const Row& row : {Row{"missing", "/nowhere/at all", "", ""}, Row{"no program", "/etc/passwd", "", ""},
                         Row{"a folder", "/usr", "", ""}, Row{"no folder", "/bin/true", "", "/nowhere"},
                         Row{"NUL byte", "/bin/true", std::string("a\0b", 3), ""}}) {
    Process process;
    process.setLaunchPath(row.path);
    process.setArguments({row.argument});
    process.setCurrentDirectory(row.folder);
    EXPECT_THROW(process.launch(), CocoaError) << row.name;
    EXPECT_THROW(process.launchDetached(), CocoaError) << row.name;
  }
}

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
