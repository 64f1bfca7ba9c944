#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Platform/Foundation/Log.h"

/// Keeps the log's lines while it lives.
class LogCapture {
 public:
  LogCapture() : former_(platform::setLogSink([this](const std::string& line) { lines.push_back(line); })) {}
  ~LogCapture() { platform::setLogSink(former_); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  std::vector<std::string> lines;

 private:
  std::function<void(const std::string&)> former_;
};
