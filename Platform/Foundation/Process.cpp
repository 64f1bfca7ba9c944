#include "Platform/Foundation/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <array>
#include <cmath>
#include <utility>

#include "Platform/Foundation/CocoaError.h"
#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Foundation/SystemTools.h"

// This C library forgot to say that these are C functions.
extern "C" {
#include <sys/pidfd.h>
}

namespace platform {

namespace {

constexpr std::size_t kOutputStep = 65536;
constexpr int kCannotStart = 127;
constexpr int kSignalled = 128;

struct Ends {
  FileDescriptor reading, writing;
};

Ends makePipe(const std::string& path) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw CocoaError::reading(errno, path);
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// What arrives before the other side has closed its end; 0 bytes for none.
template <class Number>
bool readNumber(const FileDescriptor& from, Number& number) {
  ssize_t count = 0;
  do count = read(from.get(), &number, sizeof number);
  while (count < 0 && errno == EINTR);
  return count == static_cast<ssize_t>(sizeof number);
}

template <class Number>
void writeNumber(int to, Number number) {
  [[maybe_unused]] const ssize_t written = write(to, &number, sizeof number);
}

int waitFor(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace

/// All that a new process needs, made before the fork: after it only calls that are safe there may be made.
class Process::Start {
 public:
  explicit Start(Process& process)
      : path_(SystemTools::locationOf(process.launchPath_)),
        directory_(process.currentDirectory_),
        failure_(makePipe(process.launchPath_)) {
    arguments_.push_back(process.launchPath_);
    arguments_.insert(arguments_.end(), process.arguments_.begin(), process.arguments_.end());
    for (const std::string& text : arguments_) requireWhole(text);
    argumentPointers_ = pointersTo(arguments_);
    if (process.environment_) {
      variables_ = *process.environment_;
      variablePointers_ = pointersTo(variables_);
    }
  }

  /// In the new process. Doesn't return.
  [[noreturn]] void run(int output) {
    const int failure = failure_.writing.get();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const bool ready = setsid() >= 0 && nothing >= 0 && dup2(nothing, STDIN_FILENO) >= 0 &&
                       (output < 0 || dup2(output, STDOUT_FILENO) >= 0) &&
                       (directory_.empty() || chdir(directory_.c_str()) == 0) &&
                       close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC) == 0;
    if (ready) execve(path_.c_str(), argumentPointers_.data(), variables_.empty() ? environ : variablePointers_.data());
    writeNumber(failure, errno);
    _exit(kCannotStart);
  }

  /// In this process, once the new one stands; waits until it runs its program.
  void requireStarted() {
    failure_.writing.close();
    int error = 0;
    if (readNumber(failure_.reading, error)) throw CocoaError::reading(error, path_);
  }

  void setDirectory(const char* directory) { directory_ = directory; }
  const std::string& directory() const { return directory_; }
  const std::string& path() const { return path_; }

 private:
  static void requireWhole(const std::string& text) {
    if (text.find('\0') != std::string::npos)
      throw CocoaError(CocoaError::Code::fileReadInvalidFileName, text, "an argument holds a NUL byte");
  }

  std::string path_;
  std::string directory_;
  Ends failure_;
  std::vector<std::string> arguments_, variables_;
  std::vector<char*> argumentPointers_, variablePointers_;
};

Process::~Process() {
  if (child_ != 0) {
    endGroup();
    waitFor(child_);
  }
  if (outputEnd_ >= 0) close(outputEnd_);
}

void Process::launch() {
  Start start(*this);
  Ends output;
  if (outputLimit_) output = makePipe(start.path());
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) throw CocoaError::reading(errno, start.path());
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(kCannotStart);
    start.run(output.writing.get());
  }
  output.writing.close();
  try {
    start.requireStarted();
  } catch (...) {
    waitFor(child);
    throw;
  }
  child_ = child;
  outputEnd_ = output.reading.release();
}

pid_t Process::launchDetached() {
  Start start(*this);
  if (start.directory().empty()) start.setDirectory("/");
  Ends told = makePipe(start.path());
  // The process between the two ends at once, so that the system's first process becomes the new one's parent.
  const pid_t between = fork();
  if (between < 0) throw CocoaError::reading(errno, start.path());
  if (between == 0) {
    const pid_t made = fork();
    if (made == 0) start.run(-1);
    if (made > 0) writeNumber(told.writing.get(), made);
    _exit(0);
  }
  told.writing.close();
  waitFor(between);
  pid_t made = 0;
  if (!readNumber(told.reading, made)) throw CocoaError::reading(EAGAIN, start.path());
  start.requireStarted();
  return made;
}

bool Process::takeOutput() {
  const std::size_t size = output_.size();
  output_.resize(size + kOutputStep);
  const ssize_t count = read(outputEnd_, output_.data() + size, kOutputStep);
  output_.resize(size + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  if (count < 0) return errno == EINTR || errno == EAGAIN;
  return count > 0 && !writesTooMuch();
}

bool Process::writesTooMuch() const {
  return outputLimit_ && output_.size() > *outputLimit_;
}

void Process::endGroup() const {
  kill(-child_, SIGKILL);
}

void Process::waitUntilExit() {
  if (child_ == 0) return;
  const FileDescriptor exit(pidfd_open(child_, 0));
  const int patience = silenceLimit_ ? static_cast<int>(std::ceil(*silenceLimit_ * 1000)) : -1;
  bool exited = !exit;  // without the means to be told both are waited for in turn
  while (!exited) {
    std::array<pollfd, 2> polled{{{exit.get(), POLLIN, 0}, {outputEnd_, POLLIN, 0}}};
    const int ready = poll(polled.data(), polled.size(), patience);
    if (ready < 0 && errno == EINTR) continue;
    const bool ended = outputEnd_ >= 0 && polled[1].revents != 0 && !takeOutput();
    if (ready <= 0 || writesTooMuch()) endGroup();
    if (ended) close(std::exchange(outputEnd_, -1));
    exited = polled[0].revents != 0;
  }
  // What it wrote last is still in the pipe; what else holds the pipe open is not waited for.
  if (outputEnd_ >= 0) {
    fcntl(outputEnd_, F_SETFL, O_NONBLOCK);
    for (pollfd left{outputEnd_, POLLIN, 0}; poll(&left, 1, 0) > 0 && takeOutput();) {
    }
    close(std::exchange(outputEnd_, -1));
  }
  // Not reaped before, so the group's number is still its own.
  endGroup();
  const int status = waitFor(std::exchange(child_, 0));
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

}  // namespace platform
