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
#include <map>
#include <set>
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

/// Whether a stopped process is about to make its call, or has made it.
bool isEntering(pid_t process) {
  __ptrace_syscall_info info{};
  ptrace(PTRACE_GET_SYSCALL_INFO, process, reinterpret_cast<void*>(sizeof info), &info);
  return info.op == PTRACE_SYSCALL_INFO_ENTRY;
}

class Stepper {
 public:
  Stepper(pid_t child, const Injection& injection) : child_(child), injection_(injection) {}

  Outcome run() {
    int status = 0;
    waitpid(child_, &status, 0);
    if (!WIFSTOPPED(status)) throw std::runtime_error("the child can't be traced");
    constexpr long kFollow = PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE;
    ptrace(PTRACE_SETOPTIONS, child_, nullptr,
           PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL | PTRACE_O_TRACEEXEC | (injection_.wholeTree ? kFollow : 0));
    stepped_ = {child_};
    proceed(child_, 0);
    // Until there is none: what was just forked is there before it is heard of.
    for (pid_t process = 0; (process = waitpid(injection_.wholeTree ? -1 : child_, &status, __WALL)) > 0;) {
      if (WIFSTOPPED(status))
        stopped(process, status);
      else
        ended(process, status);
    }
    return outcome_;
  }

 private:
  static void proceed(pid_t process, int signal) {
    ptrace(PTRACE_SYSCALL, process, nullptr, static_cast<long>(signal));
  }

  void ended(pid_t process, int status) {
    stepped_.erase(process);
    if (process == child_ && WIFEXITED(status)) outcome_.exitStatus = WEXITSTATUS(status);
  }

  void stopped(pid_t process, int status) {
    const bool isNew = stepped_.insert(process).second;
    if (isKilled_) {
      kill(process, SIGKILL);
      return;
    }
    const int signal = WSTOPSIG(status);
    const bool isEvent = status >> 16 != 0;
    if (signal == (SIGTRAP | 0x80)) {
      if (!isEntering(process))
        leaveCall(process);
      else if (!enterCall(process))
        return;
      proceed(process, 0);
    } else {
      proceed(process, isEvent || isNew ? 0 : signal);
    }
  }

  /// False when all was killed.
  bool enterCall(pid_t process) {
    user_regs_struct registers{};
    ptrace(PTRACE_GETREGS, process, nullptr, &registers);
    const auto number = static_cast<long>(registers.orig_rax);
    if (injection_.isNamelessUnknown && number == SYS_openat && (registers.rdx & O_TMPFILE) == O_TMPFILE) {
      replaceCall(process, registers, EOPNOTSUPP);
      return true;
    }
    if (!counts(number)) return true;
    ++outcome_.calls;
    const bool hit = injection_.fromThenOn ? outcome_.calls >= injection_.at : outcome_.calls == injection_.at;
    if (!hit || injection_.kind == Injection::Kind::none) return true;
    if (!outcome_.hitCall) outcome_.hitCall = number;
    if (injection_.kind == Injection::Kind::kill) {
      isKilled_ = true;
      for (const pid_t each : stepped_) kill(each, SIGKILL);
      return false;
    }
    replaceCall(process, registers, injection_.error);
    return true;
  }

  void replaceCall(pid_t process, user_regs_struct& registers, int error) {
    // An unknown call does nothing; its result is replaced when it returns.
    registers.orig_rax = static_cast<unsigned long long>(-1);
    ptrace(PTRACE_SETREGS, process, nullptr, &registers);
    replaced_[process] = error;
  }

  void leaveCall(pid_t process) {
    const auto replaced = replaced_.extract(process);
    if (!replaced) return;
    user_regs_struct registers{};
    ptrace(PTRACE_GETREGS, process, nullptr, &registers);
    registers.rax = static_cast<unsigned long long>(-replaced.mapped());
    ptrace(PTRACE_SETREGS, process, nullptr, &registers);
  }

  bool counts(long number) const {
    const auto& counted = injection_.counted;
    return counted.empty() || std::find(counted.begin(), counted.end(), number) != counted.end();
  }

  pid_t child_;
  const Injection& injection_;
  Outcome outcome_;
  bool isKilled_ = false;  ///< and with it what was just being made
  std::set<pid_t> stepped_;
  std::map<pid_t, int> replaced_;  ///< their call was left out, and this error is to be its result
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

std::vector<long> readingCalls() {
  return {SYS_read, SYS_pread64, SYS_copy_file_range};
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
std::vector<long> readingCalls() {
  return {};
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
