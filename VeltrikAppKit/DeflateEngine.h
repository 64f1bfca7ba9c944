#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "Platform/Foundation/Data.h"

namespace veltrik {

enum class DeflateStatus {
  ok,     ///< more to do
  end,    ///< the stream is complete and all output handed over
  error,  ///< no DEFLATE stream, or one that stops early
};

struct DeflateStep {
  DeflateStatus status = DeflateStatus::ok;
  std::size_t consumed = 0;
  std::size_t produced = 0;
};

/// One direction of raw DEFLATE (RFC 1951), a step at a time, in buffers of the caller. Holds a few hundred KiB of
/// state, which serves one stream after the other.
class DeflateEngine {
 public:
  virtual ~DeflateEngine() = default;

  /// Begins a new stream. False when the engine can't.
  virtual bool start() = 0;

  /// Takes what it can of `input` and puts what it can into `output`. `finalize` says that nothing follows this input;
  /// an incomplete compressed stream that is to be finalised and has nothing left is an error.
  virtual DeflateStep process(platform::DataView input, std::span<std::byte> output, bool finalize) = 0;

  /// After the end of decompression: how many of the last bytes given do not belong to the stream. They may have been
  /// given (and counted as consumed) in earlier steps than the last.
  virtual std::size_t unusedInput() const = 0;
};

enum class DeflateDirection { compress, decompress };
enum class DeflateLibrary { isal, zlib };

/// ISA-L where it is built in, zlib elsewhere.
DeflateLibrary preferredDeflateLibrary();
/// Null when the library is not built in.
std::unique_ptr<DeflateEngine> makeDeflateEngine(DeflateDirection direction,
                                                 DeflateLibrary library = preferredDeflateLibrary());

}  // namespace veltrik
