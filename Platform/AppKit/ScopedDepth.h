#pragma once

namespace platform {

/// Counts a nested state up for the length of a scope, whatever way it is left. The counter is borrowed.
class ScopedDepth {
 public:
  explicit ScopedDepth(int& depth) : depth_(depth) { ++depth_; }
  ~ScopedDepth() { --depth_; }
  ScopedDepth(const ScopedDepth&) = delete;
  ScopedDepth& operator=(const ScopedDepth&) = delete;

 private:
  int& depth_;
};

}  // namespace platform
