#pragma once

#include <cstdint>

#include "VeltrikAppKit/Data+Compression.h"
#include "VeltrikAppKit/DeflateEngine.h"

namespace veltrik {

/// Runs streams in one direction, one after the other, with one engine and one pair of buffers.
class DeflateStream {
 public:
  explicit DeflateStream(DeflateDirection direction, DeflateLibrary library = preferredDeflateLibrary())
      : direction_(direction), library_(library) {}

  /// As `compress` and `decompress` say; `skipCRC32` makes the result 0.
  std::uint32_t run(std::int64_t size, std::size_t bufferSize, bool skipCRC32, const ByteProvider& provider,
                    const ByteConsumer& consumer);

 private:
  void start();

  DeflateDirection direction_;
  DeflateLibrary library_;
  std::unique_ptr<DeflateEngine> engine_;
  platform::Data input_;
  platform::Data output_;
};

}  // namespace veltrik
