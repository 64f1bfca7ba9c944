#include "Backends/Desktop/ProgramStarter.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

namespace desktop {

namespace {

/// What a program is started with: nothing to read, nowhere to write but standard error, no descriptors of ours, a
/// session of its own and no blocked signals.
class Circumstances {
 public:
  Circumstances() {
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
  }
  ~Circumstances() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }
  Circumstances(const Circumstances&) = delete;
  Circumstances& operator=(const Circumstances&) = delete;

  posix_spawn_file_actions_t actions{};
  posix_spawnattr_t attributes{};
};

}  // namespace

int ProgramStarter::start(const std::vector<std::string>& command, Ended ended) {
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  const Circumstances circumstances;
  pid_t child = 0;
  const int failure =
      posix_spawnp(&child, words[0], &circumstances.actions, &circumstances.attributes, words.data(), environ);
  if (failure != 0) return failure;
  platform::FileDescriptor descriptor(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
  if (!descriptor) return 0;  // it runs, only nobody will know how it ended
  auto notifier = std::make_unique<QSocketNotifier>(descriptor.get(), QSocketNotifier::Read);
  QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this, child] { reap(child); });
  children_.emplace(child, Child{std::move(descriptor), std::move(notifier), std::move(ended)});
  return 0;
}

void ProgramStarter::reap(pid_t child) {
  int status = 0;
  if (waitpid(child, &status, WNOHANG) == 0) return;
  auto node = children_.extract(child);
  if (node.empty()) return;
  Child& gone = node.mapped();
  gone.exit->setEnabled(false);
  gone.exit.release()->deleteLater();
  gone.ended(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
}

}  // namespace desktop
