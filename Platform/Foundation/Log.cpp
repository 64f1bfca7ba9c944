#include "Platform/Foundation/Log.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <mutex>
#include <utility>

namespace platform {

namespace {

struct Log {
  std::recursive_mutex mutex;  // a sink may log itself
  std::function<void(const std::string&)> sink;
};

Log& sharedLog() {
  static auto& log = *new Log();  // never destroyed: the last to go may still write a line
  return log;
}

void writeToStandardError(const std::string& line) {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  std::tm local{};
  localtime_r(&seconds, &local);
  const auto thousandths = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  fmt::print(stderr, "{:%Y-%m-%d %H:%M:%S}.{:03} {}\n", local, thousandths, line);
}

}  // namespace

void NSLog(std::string_view line) {
  Log& log = sharedLog();
  const std::lock_guard lock(log.mutex);
  if (const auto sink = log.sink)
    sink(std::string(line));
  else
    writeToStandardError(std::string(line));
}

std::function<void(const std::string&)> setLogSink(std::function<void(const std::string&)> sink) {
  Log& log = sharedLog();
  const std::lock_guard lock(log.mutex);
  return std::exchange(log.sink, std::move(sink));
}

}  // namespace platform
