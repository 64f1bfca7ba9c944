#pragma once

#include <sys/types.h>

#include <QSocketNotifier>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/FileDescriptor.h"

namespace desktop {

/// Starts other programs, which live on without this process. Main thread.
class ProgramStarter {
 public:
  using Ended = std::function<void(int status)>;

  /// Looks for the first word along PATH. 0, or why it could not be started (errno). `ended` runs in a later turn with
  /// what the program exited with, or 128 and the number of the signal that ended it, if this object lives by then.
  int start(const std::vector<std::string>& command, Ended ended);

 private:
  void reap(pid_t child);
  struct Child {
    platform::FileDescriptor descriptor;
    std::unique_ptr<QSocketNotifier> exit;
    Ended ended;
  };
  std::map<pid_t, Child> children_;
};

}  // namespace desktop
