#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/FileDescriptor.h"
#include "VeltrikAppKit/Archive+MemoryFile.h"
#include "VeltrikAppKit/ArchiveError.h"

namespace veltrik {

/// The stdio stream that an archive's bytes are in, a file's or one in memory, read and written at given places. A file
/// is reached through the stream's descriptor, without moving the stream's position or filling its buffer: places jump
/// about so much that the buffer would be read for nothing. What fails throws `DataError` with the system's reason.
class ArchiveStream {
 public:
  /// Null when it can't be opened; `mode` as `fopen` takes it.
  static std::unique_ptr<ArchiveStream> openFile(const std::string& path, const char* mode);
  /// On a file that is open for reading and writing; throws when there is no memory for it.
  static std::unique_ptr<ArchiveStream> adopt(platform::FileDescriptor file);
  static std::unique_ptr<ArchiveStream> openMemory(std::shared_ptr<MemoryFile> file, const char* mode);

  std::uint64_t size() const;
  /// Fills `destination` from `offset` on and returns how much there was: less at the end only.
  std::size_t readAt(std::uint64_t offset, std::span<std::byte> destination) const;
  /// Writes everything, or throws.
  void writeAt(std::uint64_t offset, platform::DataView bytes);
  void truncate(std::uint64_t size);

  /// -1 in memory.
  int descriptor() const;
  /// Null for a file.
  const MemoryFile* memoryFile() const { return memoryFile_.get(); }

 private:
  struct Closer {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };
  using Handle = std::unique_ptr<std::FILE, Closer>;
  ArchiveStream(Handle stream, std::shared_ptr<MemoryFile> memoryFile);
  static std::unique_ptr<ArchiveStream> buffered(Handle stream);

  void seek(std::uint64_t offset) const;

  Handle stream_;
  std::shared_ptr<MemoryFile> memoryFile_;
};

/// Writes everything at a place of an open file, or throws `DataError`.
void writeAllAt(int file, std::uint64_t offset, platform::DataView bytes);

/// Where copied bytes go: a place in an open file, or (-1) in something that only `write` can reach.
struct CopyTarget {
  int descriptor;
  std::uint64_t offset;
  std::function<void(std::uint64_t offset, platform::DataView bytes)> write;
};

/// Copies up to `size` bytes of an archive without looking at them, by the kernel where it can, and returns how many
/// there were. Goes `step` bytes at a time; calls `progressed` before each step and at the end with the bytes copied
/// since it was last called.
std::uint64_t copyBytes(const ArchiveStream& source, std::uint64_t from, const CopyTarget& target, std::uint64_t size,
                        std::size_t step, const std::function<void(std::uint64_t)>& progressed);

}  // namespace veltrik
