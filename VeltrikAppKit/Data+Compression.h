#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "Platform/Foundation/Data.h"
#include "VeltrikAppKit/ArchiveError.h"

namespace veltrik {

/// Puts the bytes that stand at `position` (from the start of the data) into `destination` and returns how many there
/// were: as many as fit, fewer at the end only. May throw; what it throws reaches the caller unchanged.
using ByteProvider = std::function<std::size_t(std::int64_t position, std::span<std::byte> destination)>;

/// Takes the next block of output, perhaps an empty one. The bytes are valid during the call only. May throw likewise.
using ByteConsumer = std::function<void(platform::DataView block)>;

/// Makes a raw DEFLATE stream (RFC 1951, no wrapper) of `size` bytes and returns the CRC-32 of those bytes. Input is
/// asked for and output handed over in blocks of at most `bufferSize` bytes, and no more than one of each is held. A
/// block of input shorter than `bufferSize` is the last one, so when `size` is a multiple of `bufferSize` the provider
/// is asked once more, for nothing. Throws `CompressionError::invalidStream` when the engine can't be started. Any
/// thread.
std::uint32_t compress(std::int64_t size, std::size_t bufferSize, const ByteProvider& provider,
                       const ByteConsumer& consumer);

/// The way back: `size` is that of the compressed stream, the result the CRC-32 of the output, or 0 with `skipCRC32`.
/// Ends where the stream ends, be there bytes left or not. Throws `CompressionError::corruptedData` for bytes that are
/// no such stream, and for one that stops early.
std::uint32_t decompress(std::int64_t size, std::size_t bufferSize, bool skipCRC32, const ByteProvider& provider,
                         const ByteConsumer& consumer);

}  // namespace veltrik
