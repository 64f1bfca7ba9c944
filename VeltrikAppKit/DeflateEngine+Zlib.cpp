#include <zlib.h>

#include <algorithm>
#include <limits>

#include "VeltrikAppKit/DeflateEngines.h"

namespace veltrik {

namespace {

/// A negative window size is zlib's way to ask for a stream without header and checksum.
constexpr int kRawWindowBits = -MAX_WBITS;
constexpr int kMemoryLevel = 8;

/// What differs between zlib's two directions.
struct Operations {
  int (*initialize)(z_stream*);
  int (*reset)(z_stream*);
  int (*process)(z_stream*, int flush);
  int (*end)(z_stream*);
};

constexpr Operations kCompress = {[](z_stream* stream) {
                                    return deflateInit2(stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kRawWindowBits,
                                                        kMemoryLevel, Z_DEFAULT_STRATEGY);
                                  },
                                  deflateReset, deflate, deflateEnd};
constexpr Operations kDecompress = {[](z_stream* stream) { return inflateInit2(stream, kRawWindowBits); }, inflateReset,
                                    inflate, inflateEnd};

uInt bounded(std::size_t size) {
  return static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
}

class ZlibEngine : public DeflateEngine {
 public:
  explicit ZlibEngine(DeflateDirection direction)
      : direction_(direction), operations_(direction == DeflateDirection::compress ? kCompress : kDecompress) {}
  ~ZlibEngine() override {
    if (isInitialized_) operations_.end(&stream_);
  }
  ZlibEngine(const ZlibEngine&) = delete;
  ZlibEngine& operator=(const ZlibEngine&) = delete;

  bool start() override {
    if (isInitialized_) return operations_.reset(&stream_) == Z_OK;
    isInitialized_ = operations_.initialize(&stream_) == Z_OK;
    return isInitialized_;
  }

  DeflateStep process(platform::DataView input, std::span<std::byte> output, bool finalize) override {
    // zlib never writes to its input.
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(input.data()));
    stream_.avail_in = bounded(input.size());
    stream_.next_out = reinterpret_cast<Bytef*>(output.data());
    stream_.avail_out = bounded(output.size());
    const uInt given = stream_.avail_in;
    const uInt room = stream_.avail_out;
    const bool isLast = finalize && given == input.size();
    const int result =
        operations_.process(&stream_, isLast && direction_ == DeflateDirection::compress ? Z_FINISH : Z_NO_FLUSH);
    return {statusOf(result, isLast), given - stream_.avail_in, room - stream_.avail_out};
  }

  std::size_t unusedInput() const override { return stream_.avail_in; }

 private:
  DeflateStatus statusOf(int result, bool isLast) const {
    if (result == Z_STREAM_END) return DeflateStatus::end;
    // Z_BUF_ERROR says that this step moved nothing, which is an error only when nothing can follow.
    const bool isStuck = result == Z_BUF_ERROR && isLast && direction_ == DeflateDirection::decompress;
    return (result == Z_OK || result == Z_BUF_ERROR) && !isStuck ? DeflateStatus::ok : DeflateStatus::error;
  }

  DeflateDirection direction_;
  Operations operations_;
  z_stream stream_{};
  bool isInitialized_ = false;
};

}  // namespace

std::unique_ptr<DeflateEngine> makeZlibEngine(DeflateDirection direction) {
  return std::make_unique<ZlibEngine>(direction);
}

}  // namespace veltrik
