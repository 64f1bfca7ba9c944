#include "VeltrikAppKit/DeflateEngines.h"

#ifdef HAVE_ISAL

#include <isa-l/igzip_lib.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace veltrik {

namespace {

/// Within ten percent of zlib's default in size at several times its speed; see docs/decisions/0006-deflate-engine.md.
constexpr std::uint32_t kLevel = 3;

std::uint32_t bounded(std::size_t size) {
  return static_cast<std::uint32_t>(std::min<std::size_t>(size, std::numeric_limits<std::uint32_t>::max()));
}

/// Lends the buffers to either kind of stream. ISA-L never writes to its input.
template <class Stream>
void lend(Stream& stream, platform::DataView input, std::span<std::byte> output) {
  stream.next_in = reinterpret_cast<std::uint8_t*>(const_cast<std::byte*>(input.data()));
  stream.avail_in = bounded(input.size());
  stream.next_out = reinterpret_cast<std::uint8_t*>(output.data());
  stream.avail_out = bounded(output.size());
}

class Compressor : public DeflateEngine {
 public:
  Compressor() : levelBuffer_(ISAL_DEF_LVL3_SMALL) {
    isal_deflate_init(&stream_);
    stream_.level = kLevel;
    stream_.level_buf = levelBuffer_.data();
    stream_.level_buf_size = static_cast<std::uint32_t>(levelBuffer_.size());
  }

  bool start() override {
    isal_deflate_reset(&stream_);
    stream_.end_of_stream = 0;
    stream_.flush = NO_FLUSH;
    return true;
  }

  DeflateStep process(platform::DataView input, std::span<std::byte> output, bool finalize) override {
    lend(stream_, input, output);
    const std::uint32_t given = stream_.avail_in;
    const std::uint32_t room = stream_.avail_out;
    stream_.end_of_stream = finalize && given == input.size() ? 1 : 0;
    const int result = isal_deflate(&stream_);
    const auto status = result != COMP_OK                            ? DeflateStatus::error
                        : stream_.internal_state.state == ZSTATE_END ? DeflateStatus::end
                                                                     : DeflateStatus::ok;
    return {status, given - stream_.avail_in, room - stream_.avail_out};
  }

  std::size_t unusedInput() const override { return stream_.avail_in; }

 private:
  std::vector<std::uint8_t> levelBuffer_;
  isal_zstream stream_{};
};

class Decompressor : public DeflateEngine {
 public:
  bool start() override {
    isal_inflate_init(&state_);
    return true;
  }

  DeflateStep process(platform::DataView input, std::span<std::byte> output, bool finalize) override {
    lend(state_, input, output);
    const std::uint32_t given = state_.avail_in;
    const std::uint32_t room = state_.avail_out;
    const int result = isal_inflate(&state_);
    const DeflateStep step = {DeflateStatus::ok, given - state_.avail_in, room - state_.avail_out};
    if (result < 0) return {DeflateStatus::error, step.consumed, step.produced};
    if (state_.block_state == ISAL_BLOCK_FINISH) return {DeflateStatus::end, step.consumed, step.produced};
    // Of a stream that stops early ISA-L says that all is well for ever: it only never moves again.
    const bool isStuck = finalize && given == 0 && step.produced == 0;
    return {isStuck ? DeflateStatus::error : DeflateStatus::ok, step.consumed, step.produced};
  }

  // What was read ahead into the bit buffer was counted as consumed.
  std::size_t unusedInput() const override {
    return state_.avail_in + static_cast<std::size_t>(std::max(state_.read_in_length, 0)) / 8;
  }

 private:
  inflate_state state_{};
};

}  // namespace

std::unique_ptr<DeflateEngine> makeISALEngine(DeflateDirection direction) {
  if (direction == DeflateDirection::compress) return std::make_unique<Compressor>();
  return std::make_unique<Decompressor>();
}

}  // namespace veltrik

#else

std::unique_ptr<veltrik::DeflateEngine> veltrik::makeISALEngine(DeflateDirection) {
  return nullptr;
}

#endif
