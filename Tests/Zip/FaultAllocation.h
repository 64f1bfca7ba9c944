#pragma once

#include <cstddef>

namespace fault {

/// While it lives, the n-th `operator new` of this thread throws std::bad_alloc, counting from 1, and with `fromThenOn`
/// every later one too.
class FailingAllocation {
 public:
  FailingAllocation(long number, bool fromThenOn);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  /// Whether the work got that far.
  bool hit() const;
};

/// Measures how many bytes this thread holds through `operator new`, above what it held when the meter was made.
class AllocationMeter {
 public:
  AllocationMeter();
  std::size_t peak() const;

 private:
  std::size_t start_;
};

}  // namespace fault
