#pragma once

#include <cstdio>
#include <mutex>

#include "Platform/Port/Value.h"

namespace samplehost {

/// Writes values as JSON, one to a line, each line whole. Any thread.
class ConsoleOutput {
 public:
  /// The stream is borrowed and outlives the output.
  explicit ConsoleOutput(std::FILE* stream) : stream_(stream) {}
  void write(const platform::Dictionary& line);

 private:
  std::FILE* stream_;
  std::mutex mutex_;
};

}  // namespace samplehost
