#pragma once

#include <signal.h>

#include <string>
#include <string_view>
#include <thread>

#include "Platform/Foundation/Progress.h"

namespace ziptool {

/// While it lives, SIGINT and SIGTERM cancel the progress instead of ending the process, and standard error, when it is
/// a terminal, shows a bar that is wiped at the end. Made on the main thread before others start; one at a time.
class WorkMonitor {
 public:
  /// `progress` outlives the monitor. Throws std::system_error when the process has no descriptors left.
  WorkMonitor(platform::Progress& progress, std::string_view title);
  ~WorkMonitor();
  WorkMonitor(const WorkMonitor&) = delete;
  WorkMonitor& operator=(const WorkMonitor&) = delete;

 private:
  class Descriptor {
   public:
    explicit Descriptor(int number);
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const { return number_; }

   private:
    int number_;
  };

  void watch();
  void draw() const;

  platform::Progress& progress_;
  std::string title_;
  bool onTerminal_;
  sigset_t signals_;
  sigset_t previousMask_;
  Descriptor signalDescriptor_;
  Descriptor stopDescriptor_;
  std::thread watcher_;
};

}  // namespace ziptool
