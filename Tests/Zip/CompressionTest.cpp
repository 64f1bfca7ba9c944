#include "VeltrikAppKit/Data+Compression.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <string>
#include <vector>

#include "Tests/Zip/ArchiveFixture.h"
#include "VeltrikAppKit/Data+CRC32.h"
#include "VeltrikAppKit/DeflateStream.h"

namespace veltrik {
namespace {

using hostile::checksum;
using hostile::deflated;
using hostile::randomText;
using platform::bytesOf;
using platform::Data;
using platform::DataView;
using testing::ElementsAre;
using testing::Pair;

constexpr std::size_t kChunk = 16384;

/// The inverse of zlib's; nothing of ours has a hand in it.
std::string zlibInflated(std::string_view bytes, std::size_t size) {
  z_stream stream{};
  inflateInit2(&stream, -MAX_WBITS);
  std::string out(size + 1, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
  EXPECT_EQ(stream.avail_in, 0U);
  out.resize(stream.total_out);
  inflateEnd(&stream);
  return out;
}

ByteConsumer into(std::string& text, std::size_t bufferSize = kChunk) {
  return [=, &text](DataView block) {
    EXPECT_LE(block.size(), bufferSize);
    text += platform::textOf(block);
  };
}

TEST(CRC32, HasThePublishedCheckValues) {
  EXPECT_EQ(crcTable[1], 0x77073096U);
  EXPECT_EQ(crcTable[255], 0x2D02EF8DU);
  EXPECT_EQ(crc32(bytesOf("123456789")), 0xCBF43926U);
  EXPECT_EQ(crc32({}), 0U);
  EXPECT_EQ(crc32({}, 0x12345678), 0x12345678U);
}

TEST(CRC32, IsTheSameByTableByEngineAndInPieces) {
  const std::string text = randomText(5000, 256);
  for (const std::size_t size : {0, 1, 7, 15, 16, 17, 255, 256, 1000, 5000}) {
    const DataView bytes = bytesOf(text).first(size);
    const std::uint32_t want = checksum(text.substr(0, size));
    EXPECT_EQ(crc32(bytes), want) << size;
    EXPECT_EQ(crc32ByTable(bytes), want) << size;
    EXPECT_EQ(crc32(bytes.subspan(size / 3), crc32ByTable(bytes.first(size / 3))), want) << size;
  }
}

class DeflateTest : public testing::TestWithParam<DeflateLibrary> {
 protected:
  void SetUp() override {
    if (!makeDeflateEngine(DeflateDirection::compress, GetParam())) GTEST_SKIP() << "not built in";
  }
  std::uint32_t compressed(std::string_view text, std::size_t bufferSize, std::string& out) {
    return compressor_.run(static_cast<std::int64_t>(text.size()), bufferSize, false, from(std::string(text)),
                           into(out, bufferSize));
  }
  std::uint32_t decompressed(std::string_view bytes, std::size_t bufferSize, std::string& out, bool skipCRC32 = false) {
    return decompressor_.run(static_cast<std::int64_t>(bytes.size()), bufferSize, skipCRC32, from(std::string(bytes)),
                             into(out, bufferSize));
  }

  // One of each for all streams of a test: that they can be used again is a part of what is tested.
  DeflateStream compressor_{DeflateDirection::compress, GetParam()};
  DeflateStream decompressor_{DeflateDirection::decompress, GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Engines, DeflateTest, testing::Values(DeflateLibrary::isal, DeflateLibrary::zlib),
                         [](const auto& param) { return param.param == DeflateLibrary::isal ? "ISAL" : "Zlib"; });

TEST_P(DeflateTest, IsUnderstoodByZlibAndUnderstandsIt) {
  const std::size_t sizes[] = {0, 1, 100, kChunk - 1, kChunk, kChunk + 1, 3 * kChunk, 200001};
  for (const std::size_t size : sizes) {
    for (const unsigned alphabet : {1U, 7U, 256U}) {
      for (const std::size_t bufferSize : {std::size_t{61}, kChunk}) {
        SCOPED_TRACE(testing::Message() << size << " bytes of " << alphabet << " in blocks of " << bufferSize);
        const std::string text = randomText(size, alphabet);
        std::string packed;
        EXPECT_EQ(compressed(text, bufferSize, packed), checksum(text));
        EXPECT_EQ(zlibInflated(packed, size), text);
        std::string unpacked;
        EXPECT_EQ(decompressed(deflated(text), bufferSize, unpacked), checksum(text));
        EXPECT_EQ(unpacked, text);
        unpacked.clear();
        EXPECT_EQ(decompressed(packed, bufferSize, unpacked, true), 0U);
        EXPECT_EQ(unpacked, text);
      }
    }
  }
}

TEST_P(DeflateTest, EveryTruncationIsAnErrorOrEndsEarly) {
  const std::string text = randomText(3000, 40);
  const std::string packed = deflated(text);
  for (std::size_t size = 0; size < packed.size(); ++size) {
    std::string unpacked;
    EXPECT_THROW(decompressed(packed.substr(0, size), 64, unpacked), CompressionError) << size;
    EXPECT_TRUE(text.starts_with(unpacked)) << size;
  }
}

TEST_P(DeflateTest, DamagedStreamsEndInOrder) {
  const std::string packed = deflated(randomText(3000, 40));
  std::mt19937 random(7);
  int refused = 0;
  for (int round = 0; round < 2000; ++round) {
    std::string damaged = packed;
    damaged[random() % damaged.size()] ^= static_cast<char>(1U << (random() % 8));
    std::string unpacked;
    try {
      decompressed(damaged, kChunk, unpacked);
    } catch (const CompressionError& error) {
      EXPECT_EQ(error.code(), CompressionError::Case::corruptedData);
      ++refused;
    }
  }
  EXPECT_GT(refused, 0);
}

TEST_P(DeflateTest, WhatFollowsTheStreamIsCountedAsUnused) {
  const std::string text = randomText(2000, 50);
  const std::string packed = deflated(text);
  for (const std::size_t step : {1, 2, 3, 7, 64, 100000}) {
    for (const std::size_t extra : {0, 1, 5, 100}) {
      const std::string bytes = packed + std::string(extra, 'x');
      const auto engine = makeDeflateEngine(DeflateDirection::decompress, GetParam());
      ASSERT_TRUE(engine->start());
      Data output(4096);
      std::size_t given = 0;
      DeflateStep done;
      DataView input;
      while (done.status == DeflateStatus::ok) {
        if (input.empty()) {
          input = bytesOf(bytes).subspan(given).first(std::min(step, bytes.size() - given));
          given += input.size();
        }
        done = engine->process(input, output, false);
        input = input.subspan(done.consumed);
      }
      ASSERT_EQ(done.status, DeflateStatus::end);
      EXPECT_EQ(given - engine->unusedInput(), packed.size()) << "step " << step << ", extra " << extra;
    }
  }
}

TEST(Compression, AsksForBlocksUntilOneIsShort) {
  struct Case {
    std::size_t size;
    std::vector<std::pair<std::int64_t, std::size_t>> want;
  };
  const Case cases[] = {
      {0, {{0, 0}}},
      {100, {{0, 100}}},
      {kChunk, {{0, kChunk}, {kChunk, 0}}},
      {kChunk + 5, {{0, kChunk}, {kChunk, 5}}},
  };
  for (const auto& row : cases) {
    const std::string text(row.size, 'a');
    std::vector<std::pair<std::int64_t, std::size_t>> asked;
    std::string out;
    const auto provider = [&](std::int64_t position, std::span<std::byte> destination) {
      asked.emplace_back(position, destination.size());
      return from(std::string(text))(position, destination);
    };
    EXPECT_EQ(compress(static_cast<std::int64_t>(row.size), kChunk, provider, into(out)), checksum(text));
    EXPECT_EQ(asked, row.want) << row.size;
    EXPECT_EQ(zlibInflated(out, row.size), text);
    std::string back;
    EXPECT_EQ(decompress(static_cast<std::int64_t>(out.size()), kChunk, false, from(out), into(back)), checksum(text));
    EXPECT_EQ(back, text);
  }
}

TEST(Compression, PassesOnWhatItsClosuresThrow) {
  std::string out;
  EXPECT_THROW(compress(
                   10, 4, [](auto, auto) -> std::size_t { throw std::out_of_range("provider"); }, into(out)),
               std::out_of_range);
  EXPECT_THROW(compress(10, 4, from("0123456789"), [](DataView) { throw std::out_of_range("consumer"); }),
               std::out_of_range);
}

TEST(Compression, AProviderCannotClaimMoreThanWasAskedFor) {
  std::string out;
  compress(
      3, kChunk,
      [](std::int64_t, std::span<std::byte> destination) {
        std::fill(destination.begin(), destination.end(), std::byte{'a'});
        return destination.size() + 1000;
      },
      into(out));
  EXPECT_EQ(zlibInflated(out, 3), "aaa");
}

}  // namespace
}  // namespace veltrik
