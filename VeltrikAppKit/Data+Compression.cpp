#include "VeltrikAppKit/Data+Compression.h"

#include <algorithm>

#include "VeltrikAppKit/Data+CRC32.h"
#include "VeltrikAppKit/DeflateStream.h"

namespace veltrik {

namespace {

void ensureSize(platform::Data& buffer, std::size_t size) {
  if (buffer.size() < size) buffer.resize(size);
}

}  // namespace

void DeflateStream::start() {
  if (!engine_) engine_ = makeDeflateEngine(direction_, library_);
  if (!engine_ || !engine_->start()) {
    throw CompressionError(CompressionError::Case::invalidStream, "the DEFLATE engine can't be started");
  }
}

std::uint32_t DeflateStream::run(std::int64_t size, std::size_t bufferSize, bool skipCRC32,
                                 const ByteProvider& provider, const ByteConsumer& consumer) {
  start();
  ensureSize(output_, bufferSize);
  const std::span output = std::span(output_).first(bufferSize);
  const bool isCompressing = direction_ == DeflateDirection::compress;
  std::int64_t position = 0;
  std::uint32_t crc = 0;
  platform::DataView source;
  bool isLastChunk = false;
  while (true) {
    if (source.empty()) {
      const auto wanted =
          static_cast<std::size_t>(std::min<std::int64_t>(static_cast<std::int64_t>(bufferSize), size - position));
      ensureSize(input_, wanted);
      const std::size_t count = provider(position, std::span(input_).first(wanted));
      source = platform::DataView(input_).first(std::min(count, wanted));
      position += static_cast<std::int64_t>(source.size());
      isLastChunk = source.size() < bufferSize;
      if (isCompressing && !skipCRC32) crc = crc32(source, crc);
    }
    const DeflateStep step = engine_->process(source, output, isLastChunk);
    if (step.status == DeflateStatus::error) {
      throw CompressionError(CompressionError::Case::corruptedData, "the compressed data are damaged or incomplete");
    }
    source = source.subspan(step.consumed);
    const platform::DataView produced = output.first(step.produced);
    consumer(produced);
    if (!isCompressing && !skipCRC32) crc = crc32(produced, crc);
    if (step.status == DeflateStatus::end) return crc;
  }
}

std::uint32_t compress(std::int64_t size, std::size_t bufferSize, const ByteProvider& provider,
                       const ByteConsumer& consumer) {
  return DeflateStream(DeflateDirection::compress).run(size, bufferSize, false, provider, consumer);
}

std::uint32_t decompress(std::int64_t size, std::size_t bufferSize, bool skipCRC32, const ByteProvider& provider,
                         const ByteConsumer& consumer) {
  return DeflateStream(DeflateDirection::decompress).run(size, bufferSize, skipCRC32, provider, consumer);
}

}  // namespace veltrik
