// A file-system call that fails, be it once or from then on, ends an operation with an error, not with a false success;
// the archive is as before and nothing temporary is left.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>

#include "Tests/Zip/FaultStepper.h"
#include "Tests/Zip/FaultWorkbench.h"

namespace {

using fault::Injection;
using fault::Operation;
using fault::Outcome;
using fault::Workbench;

struct Failure {
  int number;
  std::vector<long> (*calls)();
  /// Even when it goes on, what is temporary can be removed.
  bool leavesRemovalWorking;
  bool isNamelessUnknown = false;
};

/// Failures that go on are much alike wherever they begin, so not every beginning is tried unless all is wanted.
constexpr long kUsualStride = 4;

/// The file has become shorter.
constexpr int kAtAnEnd = 0;

constexpr Failure kFailures[] = {{ENOSPC, fault::creatingCalls, true},    {EDQUOT, fault::creatingCalls, true},
                                 {EIO, fault::allFileCalls, false},       {EACCES, fault::changingCalls, false},
                                 {EMFILE, fault::openingCalls, false},    {EROFS, fault::changingCalls, false},
                                 {EIO, fault::allFileCalls, false, true}, {kAtAnEnd, fault::readingCalls, true}};

/// Calls that clearing away makes; when one of them fails, something may stay.
bool belongsToClearing(long call) {
  static const std::set<long> calls{SYS_unlink, SYS_unlinkat, SYS_rmdir,      SYS_open,  SYS_openat, SYS_getdents64,
                                    SYS_fstat,  SYS_stat,     SYS_newfstatat, SYS_statx, SYS_fcntl,  SYS_lstat};
  return calls.contains(call);
}

class FailingCalls : public testing::TestWithParam<Operation> {
 protected:
  void SetUp() override {
    if (!fault::canStep()) GTEST_SKIP() << "system calls can't be stepped here";
    before_ = bench_.contents();
    ASSERT_TRUE(run({}).succeeded());
    done_ = bench_.contents();
  }

  Outcome run(const Injection& injection) const {
    return fault::runStepped(injection, [this] {
      try {
        GetParam().run(bench_);
        return 0;
      } catch (const std::exception&) {
        return 1;
      }
    });
  }

  void check(const Failure& failure, const Injection& injection, const Outcome& outcome) const {
    ASSERT_TRUE(outcome.exitStatus == 0 || outcome.exitStatus == 1);
    const auto left = bench_.contents();
    const bool mayLeaveThings = injection.fromThenOn
                                    ? !failure.leavesRemovalWorking
                                    : outcome.succeeded() && outcome.hitCall && belongsToClearing(*outcome.hitCall);
    if (!mayLeaveThings) {
      for (const auto& [name, content] : left) {
        EXPECT_TRUE(before_.contains(name) || done_.contains(name)) << name << " was left";
      }
    }
    if (outcome.succeeded()) {
      for (const auto& [name, content] : done_) {
        // Of an archive that has become shorter comes what there is of it.
        if (failure.number == kAtAnEnd && name.starts_with("out")) continue;
        EXPECT_TRUE(left.contains(name) && left.at(name) == content) << name;
      }
      return;
    }
    checkArchive(injection, left.contains("archive.zip") ? left.at("archive.zip") : "nothing");
  }

 private:
  void checkArchive(const Injection& injection, const std::string& archive) const {
    // An addition is made in place, so it can't be undone while writing goes on failing.
    if (injection.fromThenOn && done_.at("archive.zip").size() > before_.at("archive.zip").size()) return;
    const bool mayBeDone = GetParam().onFailure == Operation::OnFailure::archiveAsBeforeOrDone;
    EXPECT_TRUE(archive == before_.at("archive.zip") || (mayBeDone && archive == done_.at("archive.zip")));
  }

 protected:
  Workbench bench_;
  std::map<std::string, std::string> before_;
  std::map<std::string, std::string> done_;
};

TEST_P(FailingCalls, AreReportedAndUndone) {
  for (const Failure& failure : kFailures) {
    // A sanitizer whose own call fails ends the process in the middle, and what has a name then stays.
    if (failure.isNamelessUnknown && fault::kIsSanitized) continue;
    for (const bool fromThenOn : {false, true}) {
      Injection injection{Injection::Kind::error, 0, failure.number, fromThenOn, failure.calls()};
      injection.isNamelessUnknown = failure.isNamelessUnknown;
      bool reached = true;
      while (reached) {
        injection.at += fromThenOn ? fault::stride(kUsualStride) : 1;
        SCOPED_TRACE(std::string(std::strerror(failure.number)) + " at call " + std::to_string(injection.at) +
                     (fromThenOn ? " and all after it" : ""));
        bench_.reset();
        const Outcome outcome = run(injection);
        reached = outcome.hitCall.has_value();
        SCOPED_TRACE("system call " + std::to_string(outcome.hitCall.value_or(-1)));
        check(failure, injection, outcome);
        if (HasFailure()) return;
      }
    }
  }
}

/// Calls that were interrupted are made again, and what a file system or an older kernel can't do is done otherwise.
TEST_P(FailingCalls, ThatAreNoFailuresAreGoneAround) {
  struct Detour {
    int number;
    std::vector<long> calls;
    bool fromThenOn;
  };
  const Detour detours[] = {
      {EINTR, {SYS_read, SYS_pread64, SYS_write, SYS_pwrite64, SYS_copy_file_range}, false},
      {EXDEV, {SYS_copy_file_range}, true},
      {ENOENT, {SYS_linkat}, false},
      {EPERM, {SYS_fchown}, false},
  };
  for (const Detour& detour : detours) {
    Injection injection{Injection::Kind::error, 0, detour.number, detour.fromThenOn, detour.calls};
    for (bool reached = true; reached;) {
      ++injection.at;
      SCOPED_TRACE(std::string(std::strerror(detour.number)) + " at call " + std::to_string(injection.at));
      bench_.reset();
      const Outcome outcome = run(injection);
      reached = outcome.hitCall.has_value();
      EXPECT_TRUE(outcome.succeeded());
      EXPECT_TRUE(bench_.contents() == done_);
      if (HasFailure()) return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Operations, FailingCalls, testing::ValuesIn(fault::operations()), fault::nameOf<Operation>);

/// A full disk stays full, but what an archive had before it still fits: an addition is undone byte for byte.
TEST(FullDisk, AdditionsAreUndone) {
  if (!fault::canStep()) GTEST_SKIP() << "no child process can be run here";
  const Workbench bench;
  for (const auto& operation : fault::operations()) {
    if (!operation.name.starts_with("add ")) continue;
    for (const rlim_t room : {0, 1, 30, 100, 5000, 20'000}) {
      SCOPED_TRACE(operation.name + " with room for " + std::to_string(room) + " bytes");
      bench.reset();
      const rlim_t limit = bench.originalArchive().size() + room;
      const auto outcome = fault::runStepped({}, [&] {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limits{limit, limit};
        ::setrlimit(RLIMIT_FSIZE, &limits);
        try {
          operation.run(bench);
          return 0;
        } catch (const std::exception&) {
          return 1;
        }
      });
      if (outcome.succeeded()) {
        EXPECT_LE(bench.archiveBytes().size(), limit);
        EXPECT_GT(bench.archiveBytes().size(), bench.originalArchive().size());
      } else {
        EXPECT_TRUE(bench.archiveBytes() == bench.originalArchive());
      }
    }
  }
}

}  // namespace
