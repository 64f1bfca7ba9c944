#include "Tests/Zip/FaultAllocation.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

// The test program's own operator new: it can fail on demand and knows how much is held. Those of arrays lead here.
namespace {

struct Account {
  long untilFailure = 0;  // 0: nothing fails
  bool fromThenOn = false;
  bool hit = false;
  std::ptrdiff_t held = 0;
  std::ptrdiff_t peak = 0;
};

thread_local Account account;

bool fails() {
  if (account.hit && account.fromThenOn) return true;
  if (account.untilFailure == 0 || --account.untilFailure > 0) return false;
  account.hit = true;
  return true;
}

void* allocated(std::size_t size, std::size_t alignment) {
  if (fails()) return nullptr;
  void* memory = alignment == 0 ? std::malloc(std::max<std::size_t>(size, 1)) : std::aligned_alloc(alignment, size);
  if (memory == nullptr) return nullptr;
  account.held += static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
  account.peak = std::max(account.peak, account.held);
  return memory;
}

void* allocatedOrThrow(std::size_t size, std::size_t alignment) {
  void* memory = allocated(size, alignment);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

std::size_t roundedUp(std::size_t size, std::align_val_t alignment) {
  const auto step = static_cast<std::size_t>(alignment);
  return (size + step - 1) / step * step;
}

void released(void* memory) noexcept {
  if (memory != nullptr) account.held -= static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
  return allocatedOrThrow(size, 0);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocated(size, 0);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocatedOrThrow(roundedUp(size, alignment), static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
  released(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  released(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  released(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  released(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  released(memory);
}

namespace fault {

FailingAllocation::FailingAllocation(long number, bool fromThenOn) {
  account.untilFailure = number;
  account.fromThenOn = fromThenOn;
  account.hit = false;
}

FailingAllocation::~FailingAllocation() {
  account.untilFailure = 0;
  account.fromThenOn = false;
}

bool FailingAllocation::hit() const {
  return account.hit;
}

AllocationMeter::AllocationMeter() : start_(static_cast<std::size_t>(std::max<std::ptrdiff_t>(account.held, 0))) {
  account.peak = account.held;
}

std::size_t AllocationMeter::peak() const {
  return static_cast<std::size_t>(std::max<std::ptrdiff_t>(account.peak, 0)) - start_;
}

}  // namespace fault
