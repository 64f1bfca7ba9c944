#pragma once

#include <cstdint>
#include <span>

#include "VeltrikAppKit/ArchiveStream.h"

namespace veltrik {

/// New bytes for an archive from a place on, that of its central directory. What stands there is left alone until
/// everything beyond the archive's old end is written; so as long as `commit` has not begun, cutting the file at its
/// old end undoes everything.
class TailWriter {
 public:
  TailWriter(ArchiveStream& stream, std::uint64_t start, std::uint64_t oldEnd);

  /// Where the next byte goes.
  std::uint64_t position() const;
  /// Room for up to `count` bytes at the end, of which `advance` takes the first ones.
  std::span<std::byte> room(std::size_t count);
  void advance(std::size_t count);
  void append(platform::DataView bytes);
  /// Replaces bytes that were written before.
  void patch(std::uint64_t offset, platform::DataView bytes);
  /// Takes back everything from `position` on.
  void rewind(std::uint64_t position);

  /// Puts everything into its place, in one write if it was not too much. Throws `DataError`; then `undo` is due.
  void commit();
  /// Makes the archive as it was, given the bytes that stood at the start. Does what it can; never throws.
  void undo(platform::DataView original) noexcept;

 private:
  platform::DataView head() const;
  platform::DataView pendingTail() const;
  void flushTail();

  ArchiveStream& stream_;
  std::uint64_t start_;
  std::uint64_t oldEnd_;
  std::size_t headLimit_;    ///< how many bytes are held back
  std::uint64_t tailStart_;  ///< where in the archive the part of the buffer behind the head goes
  platform::Data buffer_;    ///< the head, what of the rest is not written yet, and room
  std::size_t used_ = 0;
  bool isHeadTouched_ = false;
};

}  // namespace veltrik
