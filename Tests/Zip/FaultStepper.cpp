#include "Tests/Zip/FaultStepper.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace fault {

long stride(long usual) {
  const char* wish = std::getenv("ZIP_FAULTS");
  return wish != nullptr && std::string_view(wish) == "all" ? 1 : usual;
}

#if defined(__x86_64__)

namespace {

constexpr int kEscapedException = 99;
constexpr int kNotTraceable = 98;

[[noreturn]] void runChild(const std::function<int()>& body) {
  if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(kNotTraceable);
  raise(SIGSTOP);
  int status = kEscapedException;
  try {
    status = body();
  } catch (...) {
    status = kEscapedException;
  }
  _exit(status);
}

std::vector<long> joined(std::vector<long> first, const std::vector<long>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

class Stepper {
 public:
  Stepper(pid_t child, const Injection& injection) : child_(child), injection_(injection) {}

  Outcome run() {
    waitpid(child_, &status_, 0);
    if (!WIFSTOPPED(status_)) throw std::runtime_error("the child can't be traced");
    ptrace(PTRACE_SETOPTIONS, child_, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    for (int signal = 0; proceed(signal);) {
      signal = 0;
      if (WSTOPSIG(status_) != (SIGTRAP | 0x80)) {
        signal = WSTOPSIG(status_);
      } else if (inCall_) {
        leaveCall();
      } else if (!enterCall()) {
        break;
      }
    }
    if (WIFEXITED(status_)) outcome_.exitStatus = WEXITSTATUS(status_);
    return outcome_;
  }

 private:
  /// Lets the child run to its next stop; false when it has ended.
  bool proceed(int signal) {
    ptrace(PTRACE_SYSCALL, child_, nullptr, static_cast<long>(signal));
    waitpid(child_, &status_, 0);
    return WIFSTOPPED(status_);
  }

  /// False when the child was killed.
  bool enterCall() {
    inCall_ = true;
    user_regs_struct registers{};
    ptrace(PTRACE_GETREGS, child_, nullptr, &registers);
    const auto number = static_cast<long>(registers.orig_rax);
    if (!counts(number)) return true;
    ++outcome_.calls;
    const bool hit = injection_.fromThenOn ? outcome_.calls >= injection_.at : outcome_.calls == injection_.at;
    if (!hit || injection_.kind == Injection::Kind::none) return true;
    if (!outcome_.hitCall) outcome_.hitCall = number;
    if (injection_.kind == Injection::Kind::kill) {
      kill(child_, SIGKILL);
      waitpid(child_, &status_, 0);
      return false;
    }
    // An unknown call does nothing; its result is replaced when it returns.
    registers.orig_rax = static_cast<unsigned long long>(-1);
    ptrace(PTRACE_SETREGS, child_, nullptr, &registers);
    replaceResult_ = true;
    return true;
  }

  void leaveCall() {
    inCall_ = false;
    if (!replaceResult_) return;
    replaceResult_ = false;
    user_regs_struct registers{};
    ptrace(PTRACE_GETREGS, child_, nullptr, &registers);
    registers.rax = static_cast<unsigned long long>(-injection_.error);
    ptrace(PTRACE_SETREGS, child_, nullptr, &registers);
  }

  bool counts(long number) const {
    const auto& counted = injection_.counted;
    return counted.empty() || std::find(counted.begin(), counted.end(), number) != counted.end();
  }

  pid_t child_;
  const Injection& injection_;
  Outcome outcome_;
  int status_ = 0;
  bool inCall_ = false;
  bool replaceResult_ = false;
};

}  // namespace

Outcome runStepped(const Injection& injection, const std::function<int()>& body) {
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) runChild(body);
  return Stepper(child, injection).run();
}

bool canStep() {
  static const bool able = [] {
    try {
      return runStepped({}, [] { return 7; }).exitStatus == 7;
    } catch (const std::exception&) {
      return false;
    }
  }();
  return able;
}

std::vector<long> openingCalls() {
  return {SYS_open, SYS_openat, SYS_creat};
}

std::vector<long> creatingCalls() {
  return joined(openingCalls(), {SYS_write, SYS_pwrite64, SYS_writev, SYS_pwritev, SYS_copy_file_range, SYS_sendfile,
                                 SYS_fallocate, SYS_mkdir, SYS_mkdirat, SYS_link, SYS_linkat, SYS_symlink,
                                 SYS_symlinkat, SYS_rename, SYS_renameat, SYS_renameat2});
}

std::vector<long> changingCalls() {
  return joined(creatingCalls(), {SYS_ftruncate, SYS_truncate, SYS_unlink, SYS_unlinkat, SYS_rmdir, SYS_chmod,
                                  SYS_fchmod, SYS_fchmodat, SYS_utimensat, SYS_fsync, SYS_fdatasync, SYS_syncfs});
}

std::vector<long> allFileCalls() {
  return joined(changingCalls(), {SYS_read, SYS_pread64, SYS_readv, SYS_lseek, SYS_stat, SYS_lstat, SYS_fstat,
                                  SYS_newfstatat, SYS_statx, SYS_access, SYS_faccessat, SYS_faccessat2, SYS_readlink,
                                  SYS_readlinkat, SYS_getdents64, SYS_close, SYS_fcntl});
}

#else

Outcome runStepped(const Injection&, const std::function<int()>&) {
  throw std::logic_error("no stepper here");
}
bool canStep() {
  return false;
}
std::vector<long> openingCalls() {
  return {};
}
std::vector<long> creatingCalls() {
  return {};
}
std::vector<long> changingCalls() {
  return {};
}
std::vector<long> allFileCalls() {
  return {};
}

#endif

}  // namespace fault
