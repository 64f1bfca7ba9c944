#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

#include "Platform/Foundation/Data.h"

namespace veltrik {

/// A file in memory: bytes and a position, which the streams opened on it read, write and seek.
class MemoryFile : public std::enable_shared_from_this<MemoryFile> {
 public:
  static std::shared_ptr<MemoryFile> make(platform::Data data);

  /// A stdio stream, or null. It can be written to unless `mode` begins with "r" and does not end with "+", and stands
  /// at the end when it begins with "a"; opening never cuts the bytes off. The stream keeps this object alive.
  std::FILE* openStream(const char* mode);

  const platform::Data& data() const { return data_; }
  void truncate(std::size_t size);

  // The stream's operations.
  std::size_t read(std::span<std::byte> buffer);
  /// Fills the gap with zeros when the position lies beyond the end.
  void write(platform::DataView bytes);
  /// The new position; -1, and no change, for an unknown `whence` or a position before the start.
  std::int64_t seek(std::int64_t offset, int whence);

 private:
  explicit MemoryFile(platform::Data data) : data_(std::move(data)) {}

  platform::Data data_;
  std::size_t offset_ = 0;
};

}  // namespace veltrik
