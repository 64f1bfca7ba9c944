#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Foundation/Data.h"

namespace platform {

/// Another program, run with a vector of arguments (never by a shell). Its standard input is empty, its standard error
/// this process's, and it gets none of this process's other descriptors. Any thread, one at a time.
class PLATFORM_EXPORT Process {
 public:
  /// Ends a child that still runs.
  ~Process();
  Process() = default;
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  const std::string& launchPath() const { return launchPath_; }
  /// An absolute path. What `SystemTools` keeps elsewhere is run from there.
  void setLaunchPath(std::string path) { launchPath_ = std::move(path); }
  const std::vector<std::string>& arguments() const { return arguments_; }
  /// Without the program's own name.
  void setArguments(std::vector<std::string> arguments) { arguments_ = std::move(arguments); }
  /// "NAME=value" texts instead of this process's environment.
  void setEnvironment(std::vector<std::string> environment) { environment_ = std::move(environment); }
  /// This process's, or "/" for a detached one, unless set.
  void setCurrentDirectory(std::string path) { currentDirectory_ = std::move(path); }
  /// Keeps what the child writes to its standard output, up to `limit` bytes; a child that writes more is ended.
  void captureStandardOutput(std::size_t limit) { outputLimit_ = limit; }
  /// Ends a child that writes nothing for so many seconds. Needs captured output; without a limit unless set.
  void setSilenceLimit(double seconds) { silenceLimit_ = seconds; }

  /// Starts the program as a child, leader of a session and a process group of its own, without a terminal. It doesn't
  /// outlive the calling thread. Throws `CocoaError` with the path when it can't be started.
  void launch();
  /// Blocks until the child has exited, taking its output meanwhile, and ends what it left running in its group.
  void waitUntilExit();
  /// What it exited with, or 128 and the number of the signal that ended it. After `waitUntilExit`.
  int terminationStatus() const { return status_; }
  DataView standardOutput() const { return output_; }

  /// Starts the program on its own: it lives on without this process, and nobody has to wait for it. Its process
  /// identifier. Throws as `launch` does.
  pid_t launchDetached();

 private:
  class Start;
  void endGroup() const;
  /// False at the output's end, or past its limit.
  bool takeOutput();
  bool writesTooMuch() const;

  std::string launchPath_;
  std::vector<std::string> arguments_;
  std::optional<std::vector<std::string>> environment_;
  std::string currentDirectory_;
  std::optional<std::size_t> outputLimit_;
  std::optional<double> silenceLimit_;

  pid_t child_ = 0;
  int outputEnd_ = -1;
  int status_ = 0;
  Data output_;
};

}  // namespace platform
