#include "VeltrikAppKit/Archive+MemoryFile.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace veltrik {
namespace {

using platform::bytesOf;
using platform::copyOf;

std::string textOf(const MemoryFile& file) {
  return std::string(platform::textOf(file.data()));
}

TEST(MemoryFile, WritesInsideAcrossAndBeyondItsEnd) {
  struct Case {
    const char* why;
    std::string_view before;
    int position;
    std::string_view written;
    std::string after;
  };
  const Case cases[] = {
      {"inside", "abcd", 1, "XY", "aXYd"},
      {"to the end", "abcd", 2, "XY", "abXY"},
      {"across the end", "abcd", 2, "WXYZ", "abWXYZ"},
      {"behind the end", "abcd", 4, "XY", "abcdXY"},
      {"far beyond the end", "abcd", 10, "XYZ", std::string("abcd\0\0\0\0\0\0XYZ", 13)},
      {"into nothing", "", 0, "XY", "XY"},
  };
  for (const auto& row : cases) {
    const auto file = MemoryFile::make(copyOf(bytesOf(row.before)));
    file->seek(row.position, SEEK_SET);
    file->write(bytesOf(row.written));
    EXPECT_EQ(textOf(*file), row.after) << row.why;
    EXPECT_EQ(file->seek(0, SEEK_CUR), row.position + static_cast<int>(row.written.size())) << row.why;
  }
}

TEST(MemoryFile, SeeksFromAnywhereButNotBeforeTheStart) {
  const auto file = MemoryFile::make(copyOf(bytesOf("0123456789")));
  EXPECT_EQ(file->seek(-1, SEEK_END), 9);
  std::array<std::byte, 4> buffer{};
  EXPECT_EQ(file->read(buffer), 1U);
  EXPECT_EQ(buffer[0], std::byte{'9'});
  EXPECT_EQ(file->seek(-11, SEEK_END), -1);
  EXPECT_EQ(file->seek(5, 99), -1);
  EXPECT_EQ(file->seek(INT64_MAX, SEEK_CUR), -1);
  EXPECT_EQ(file->seek(-4, SEEK_CUR), 6) << "what was refused changed nothing";
  EXPECT_EQ(file->seek(20, SEEK_SET), 20);
  EXPECT_EQ(file->read(buffer), 0U);
}

TEST(MemoryFile, TheModeDecidesWhatAStreamMayDo) {
  struct Case {
    const char* mode;
    bool isWritable;
    const char* after;
  };
  const Case cases[] = {{"rb", false, "abcd"}, {"rb+", true, "Xbcd"}, {"wb+", true, "Xbcd"},
                        {"w", true, "Xbcd"},   {"a", true, "abcdX"},  {"", false, "abcd"}};
  for (const auto& row : cases) {
    const auto file = MemoryFile::make(copyOf(bytesOf("abcd")));
    std::FILE* stream = file->openStream(row.mode);
    ASSERT_NE(stream, nullptr) << row.mode;
    const bool isWritten = std::fwrite("X", 1, 1, stream) == 1 && std::fflush(stream) == 0;
    EXPECT_EQ(isWritten, row.isWritable) << row.mode;
    EXPECT_EQ(textOf(*file), row.after) << row.mode;
    std::fclose(stream);
  }
}

TEST(MemoryFile, TheStreamKeepsItAliveAndReadsAndSeeks) {
  std::weak_ptr<MemoryFile> watched;
  std::FILE* stream = nullptr;
  {
    const auto file = MemoryFile::make(copyOf(bytesOf("0123456789")));
    watched = file;
    stream = file->openStream("rb+");
  }
  ASSERT_FALSE(watched.expired());
  std::array<char, 3> buffer{};
  EXPECT_EQ(std::fseek(stream, -3, SEEK_END), 0);
  EXPECT_EQ(std::fread(buffer.data(), 1, 3, stream), 3U);
  EXPECT_EQ(std::string_view(buffer.data(), 3), "789");
  EXPECT_NE(std::fseek(stream, -30, SEEK_END), 0);
  std::fclose(stream);
  EXPECT_TRUE(watched.expired());
}

}  // namespace
}  // namespace veltrik
