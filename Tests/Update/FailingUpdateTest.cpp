// A file-system call of the update, or of the tools it runs, fails, once or from then on: no false success, never a
// missing application, and the log says where it ended. Then file systems that can't do what is asked.

#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <iostream>

#include "Tests/Update/StoppedUpdateFixture.h"

namespace veltrik {
namespace {

namespace filesystem = std::filesystem;
using fault::Injection;
using testing::Contains;

constexpr long kUsualStride = 79;

struct Failure {
  int number;
  std::vector<long> (*calls)();
};

std::vector<long> movingCalls() {
  return {SYS_rename, SYS_renameat, SYS_renameat2, SYS_linkat, SYS_copy_file_range, SYS_ioctl};
}

/// A descriptor is closed even where closing fails, which leaving out the call would not show.
std::vector<long> realCalls() {
  auto calls = fault::allFileCalls();
  std::erase(calls, SYS_close);
  return calls;
}

constexpr Failure kFailures[] = {{ENOSPC, fault::creatingCalls},
                                 {EIO, realCalls},
                                 {EACCES, fault::changingCalls},
                                 {EXDEV, movingCalls},
                                 {EROFS, fault::changingCalls}};

class FailingUpdate : public StoppedUpdate {
 protected:
  /// What the log ends with when the flow has come to one of its ends.
  bool endsAsItShould() const {
    const std::string text = log.text();
    if (text.find("unzip succeed") == std::string::npos) return false;
    if (text.find("now will install") == std::string::npos) return true;
    for (const char* end : {"failed to copy backup file\n", "relaunch> will open", "rollback> remove backup file",
                            "rollback> restore failed\n"})
      if (text.find(end) != std::string::npos) return true;
    return false;
  }

  void check() {
    ASSERT_TRUE(standsComplete() || logged("rollback> restore failed")) << log.text();
    ASSERT_TRUE(endsAsItShould()) << log.text();
    ASSERT_TRUE(!logged("relaunch> will open") || stands(updated)) << log.text();
    const bool isMissing = !filesystem::exists(bench.installed());
    ASSERT_TRUE(!isMissing || treeOf(bench.backup()) == old) << log.text();
    const bool blocked = !isMissing && filesystem::exists(bench.backup());
    runHere();
    if (blocked && logged("failed to copy backup file")) return;
    ASSERT_TRUE(stands(updated)) << log.text();
    ASSERT_EQ(namesIn(bench.root / "install"), std::vector<std::string>{"Mirelo.app"}) << log.text();
  }
};

TEST_F(FailingUpdate, NeverLosesTheApplicationNorTellsAFalseSuccess) {
  long points = 0;
  for (const Failure& failure : kFailures) {
    for (const bool fromThenOn : {false, true}) {
      Injection injection{Injection::Kind::error, 1, failure.number, fromThenOn, failure.calls()};
      for (bool reached = true; reached; injection.at += fault::stride(kUsualStride)) {
        SCOPED_TRACE(std::string(std::strerror(failure.number)) + " at call " + std::to_string(injection.at) +
                     (fromThenOn ? " and all after it" : ""));
        reset();
        const auto outcome = run(injection);
        reached = outcome.hitCall.has_value();
        points += reached ? 1 : 0;
        SCOPED_TRACE("system call " + std::to_string(outcome.hitCall.value_or(-1)));
        check();
        if (HasFatalFailure()) return;
      }
    }
  }
  std::cout << "failing calls: " << points << std::endl;
}

class FileSystems : public testing::Test {
 protected:
  std::vector<std::string> update() const { return runUpdate(bench.archive()); }
  static std::string line(const std::string& message) { return "[Mirelo AppRestarter] " + message; }
  void expectInstalledAlone() const {
    EXPECT_EQ(treeOf(bench.installed()), treeOf(bench.root / "packed/Mirelo.app"));
    EXPECT_THAT(namesIn(bench.root / "install"), testing::ElementsAre("Mirelo.app"));
  }

  const UpdateBench bench;
};

TEST_F(FileSystems, AnotherOneThanThatOfTheDownload) {
  const SmallDisk disk(bench.root / "install", "size=4m");
  if (!disk.isMounted()) GTEST_SKIP() << "nothing can be mounted here";
  bench.makeInstalled();
  bench.makeUpdate(bench.archive());
  update();
  expectInstalledAlone();
}

TEST_F(FileSystems, OneInLayersThatMovesNoFolders) {
  const auto layers = bench.root / "layers";
  const SmallDisk disk(layers, "size=8m");
  if (!disk.isMounted()) GTEST_SKIP() << "nothing can be mounted here";
  filesystem::copy(bench.root / "install", layers / "lower",
                   filesystem::copy_options::recursive | filesystem::copy_options::copy_symlinks);
  filesystem::create_directories(layers / "upper");
  filesystem::create_directories(layers / "work");
  const std::string options = "lowerdir=" + (layers / "lower").native() + ",upperdir=" + (layers / "upper").native() +
                              ",workdir=" + (layers / "work").native();
  if (mount("overlay", (bench.root / "install").c_str(), "overlay", 0, options.c_str()) != 0)
    GTEST_SKIP() << "no layers here";
  bench.makeUpdate(bench.archive());
  update();
  expectInstalledAlone();
  umount2((bench.root / "install").c_str(), MNT_DETACH);
}

// One that is too small for the new version is rolled back, killed and undisturbed, in KilledUpdateTest.
TEST_F(FileSystems, OneTooSmallForTheBackupKeepsTheOldVersion) {
  const SmallDisk disk(bench.root / "install", "nr_inodes=40");
  if (!disk.isMounted()) GTEST_SKIP() << "nothing can be mounted here";
  bench.makeInstalled();
  const auto before = treeOf(bench.installed());
  bench.makeUpdate(bench.archive());
  EXPECT_THAT(update(), Contains(line("installAndRestart> failed to copy backup file")));
  EXPECT_EQ(treeOf(bench.installed()), before);
  EXPECT_THAT(namesIn(bench.root / "install"), testing::ElementsAre("Mirelo.app"));
}

TEST_F(FileSystems, AFolderThatAnOrdinaryUserMayNotChange) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can become another one";
  constexpr uid_t kNobody = 65534;
  const auto before = treeOf(bench.installed());
  bench.makeUpdate(bench.archive());
  filesystem::permissions(bench.root, filesystem::perms(0755));
  filesystem::permissions(bench.downloads(), filesystem::perms(0777));
  SharedText log;
  const auto outcome = fault::runStepped({}, [&] {
    if (setuid(kNobody) != 0) return 1;
    for (const std::string& each : update()) log.append(each + "\n");
    return 0;
  });
  EXPECT_EQ(outcome.exitStatus, 0);
  EXPECT_THAT(log.text(), testing::EndsWith("installAndRestart> failed to copy backup file\n"));
  EXPECT_EQ(treeOf(bench.installed()), before);
}

}  // namespace
}  // namespace veltrik
