#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace platform {

/// Owns an open file descriptor, or none (-1).
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int number) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) reset(std::exchange(other.number_, -1));
    return *this;
  }
  ~FileDescriptor() { reset(); }

  int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }
  int release() { return std::exchange(number_, -1); }

  /// Closes and tells whether the system could: some file systems report a failed write no earlier.
  bool close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }

 private:
  void reset(int number = -1) {
    const int saved = errno;
    close();
    errno = saved;
    number_ = number;
  }

  int number_ = -1;
};

}  // namespace platform
