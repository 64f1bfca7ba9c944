#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "Platform/Foundation/ByteCursor.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/Entry.h"

namespace veltrik {
namespace {

using platform::bytesOf;
using platform::Data;
using platform::DataView;
using EndRecord = Archive::EndOfCentralDirectoryRecord;
using EntryType = Entry::EntryType;

/// Bytes that count up, so that every field of a record differs from every other.
Data countingRecord(std::uint32_t signature, std::size_t size) {
  Data data;
  platform::appendLittleEndian(data, signature);
  for (std::size_t at = 4; at < size; ++at) data.push_back(static_cast<std::byte>(at));
  return data;
}

/// Parses a record whose provider hands out `variable` from the front; counts what was asked for.
template <class Record>
std::optional<Record> parse(DataView fixed, DataView variable, std::size_t* asked = nullptr) {
  return Record::parse(fixed, [=](std::size_t count) {
    if (asked != nullptr) *asked = count;
    return variable.first(std::min(count, variable.size()));
  });
}

template <class Record>
class RecordTest : public testing::Test {};
using Records = testing::Types<Entry::LocalFileHeader, Entry::CentralDirectoryStructure, EndRecord>;
TYPED_TEST_SUITE(RecordTest, Records);

TYPED_TEST(RecordTest, WritesWhatItReadByteForByte) {
  const Data fixed = countingRecord(TypeParam::signature, TypeParam::fixedSize);
  const Data variable(200000, std::byte{'v'});
  std::size_t asked = 0;
  const auto record = parse<TypeParam>(fixed, variable, &asked);
  ASSERT_TRUE(record);
  Data want = fixed;
  platform::append(want, DataView(variable).first(asked));
  EXPECT_EQ(record->data(), want);
}

TYPED_TEST(RecordTest, RefusesAnyOtherSizeAndSignature) {
  const Data fixed = countingRecord(TypeParam::signature, TypeParam::fixedSize);
  const Data variable(200000);
  Data longer = fixed;
  longer.push_back({});
  EXPECT_FALSE(parse<TypeParam>(longer, variable));
  for (std::size_t size = 0; size < fixed.size(); ++size) {
    EXPECT_FALSE(parse<TypeParam>(DataView(fixed).first(size), variable)) << size;
  }
  for (std::size_t at = 0; at < 4; ++at) {
    Data other = fixed;
    other[at] ^= std::byte{0x20};
    EXPECT_FALSE(parse<TypeParam>(other, variable)) << at;
  }
}

TYPED_TEST(RecordTest, RefusesAProviderThatGivesLessMoreOrThrows) {
  const Data fixed = countingRecord(TypeParam::signature, TypeParam::fixedSize);
  const Data variable(200000);
  std::size_t asked = 0;
  ASSERT_TRUE(parse<TypeParam>(fixed, variable, &asked));
  ASSERT_GT(asked, 0U);
  EXPECT_FALSE(parse<TypeParam>(fixed, DataView(variable).first(asked - 1)));
  EXPECT_FALSE(TypeParam::parse(fixed, [&](std::size_t count) { return DataView(variable).first(count + 1); }));
  EXPECT_FALSE(TypeParam::parse(fixed, [](std::size_t) -> DataView { throw std::runtime_error("no"); }));
  EXPECT_THROW(TypeParam::parse(fixed, [](std::size_t) -> DataView { throw std::bad_alloc(); }), std::bad_alloc);
}

TEST(EndRecordTest, AnEmptyArchiveIsOneRecordOf22Bytes) {
  const Data empty = EndRecord().data();
  EXPECT_EQ(platform::textOf(empty), std::string("PK\x05\x06", 4) + std::string(18, '\0'));
  EXPECT_EQ(parse<EndRecord>(empty, {}).value().data(), empty);
}

TEST(VariableData, IsDividedByTheLengths) {
  Data fixed = countingRecord(Entry::CentralDirectoryStructure::signature, 46);
  fixed[28] = std::byte{4};
  fixed[30] = std::byte{2};
  fixed[32] = std::byte{3};
  fixed[29] = fixed[31] = fixed[33] = std::byte{0};
  const auto structure = parse<Entry::CentralDirectoryStructure>(fixed, bytesOf("nameexcom and more"));
  ASSERT_TRUE(structure);
  EXPECT_EQ(platform::textOf(structure->fileNameData()), "name");
  EXPECT_EQ(platform::textOf(structure->extraFieldData()), "ex");
  EXPECT_EQ(platform::textOf(structure->fileCommentData()), "com");
  EXPECT_EQ(structure->size(), 46U + 9);
}

TEST(DataDescriptor, IsReadWithAndWithoutItsSignature) {
  const std::string words("\x01\0\0\0\x02\0\0\0\x03\0\0\0", 12);
  struct Case {
    const char* name;
    std::string bytes;
    bool hasSignature;
  };
  const Case cases[] = {{"with", std::string("PK\x07\x08") + words, true}, {"without", words + "next", false}};
  for (const auto& row : cases) {
    const auto descriptor = parse<Entry::DataDescriptor>(bytesOf(row.bytes), {});
    ASSERT_TRUE(descriptor) << row.name;
    EXPECT_EQ(descriptor->hasSignature, row.hasSignature);
    EXPECT_EQ(descriptor->crc32, 1U);
    EXPECT_EQ(descriptor->compressedSize, 2U);
    EXPECT_EQ(descriptor->uncompressedSize, 3U);
  }
  EXPECT_FALSE(parse<Entry::DataDescriptor>(bytesOf("fifteen bytes.."), {}));
  EXPECT_FALSE(parse<Entry::DataDescriptor>(bytesOf("seventeen bytes.."), {}));
}

struct Description {
  std::string name = "f";
  std::uint16_t madeBy = 0x0315;
  std::uint16_t versionNeeded = 20;
  std::uint16_t flags = 0;
  std::uint32_t attributes = 0;
  std::uint16_t method = 0;
  std::optional<Entry::DataDescriptor> descriptor = std::nullopt;
};

std::optional<Entry> entryOf(const Description& wanted) {
  const auto length = static_cast<std::uint16_t>(wanted.name.size());
  const Data name = platform::copyOf(bytesOf(wanted.name));
  return Entry::make(
      {.versionMadeBy = wanted.madeBy,
       .versionNeededToExtract = wanted.versionNeeded,
       .generalPurposeBitFlag = wanted.flags,
       .compressionMethod = wanted.method,
       .lastModFileTime = 0x6000,
       .lastModFileDate = 0x0021,
       .crc32 = 0xC,
       .compressedSize = 100,
       .uncompressedSize = 200,
       .fileNameLength = length,
       .externalFileAttributes = wanted.attributes,
       .relativeOffsetOfLocalHeader = 1000,
       .variableData = name},
      {.crc32 = 0xA, .compressedSize = 10, .uncompressedSize = 20, .fileNameLength = length, .variableData = name},
      wanted.descriptor);
}

TEST(Entry, TypeAndPermissionsFollowTheHostSystemsRules) {
  struct Case {
    const char* why;
    unsigned system, mode, dosBits;
    const char* name;
    EntryType type;
    unsigned permissions;
  };
  const Case cases[] = {
      {"DOS directory bit alone", 0, 0, 0x10, "d", EntryType::directory, 0755},
      {"DOS directory bit with a low bit", 0, 0, 0x11, "d", EntryType::directory, 0755},
      {"DOS directory and archive bits", 0, 0, 0x30, "d", EntryType::file, 0644},
      {"DOS, by name", 0, 0, 0x30, "d/", EntryType::directory, 0755},
      {"DOS ignores a mode", 0, S_IFLNK | 0600, 0, "d", EntryType::file, 0644},
      {"regular with a slash", 3, S_IFREG | 0640, 0, "d/", EntryType::file, 0640},
      {"set-user-id and set-group-id", 3, S_IFREG | 06711, 0, "f", EntryType::file, 06711},
      {"sticky", 19, S_IFDIR | 01777, 0, "d", EntryType::directory, 01777},
      {"directory without a slash, no bits", 3, S_IFDIR, 0, "d", EntryType::directory, 0755},
      {"link", 3, S_IFLNK | 0777, 0, "l", EntryType::symlink, 0777},
      {"Mac link", 19, S_IFLNK | 0777, 0, "l", EntryType::symlink, 0777},
      {"pipe, by name, no bits", 3, S_IFIFO, 0, "p", EntryType::file, 0644},
      {"no mode, by name", 19, 0, 0, "d/", EntryType::directory, 0755},
      {"UNIX ignores the DOS bit", 3, 0, 0x10, "d", EntryType::file, 0644},
      {"unknown system, by name", 7, S_IFDIR | 0600, 0, "f", EntryType::file, 0644},
      {"system 20, by name", 20, S_IFLNK, 0, "d/", EntryType::directory, 0755},
  };
  for (const auto& row : cases) {
    const auto entry = entryOf({.name = row.name,
                                .madeBy = static_cast<std::uint16_t>(row.system << 8 | 21),
                                .attributes = row.mode << 16 | row.dosBits});
    EXPECT_EQ(entry->type(), row.type) << row.why;
    EXPECT_EQ(entry->fileAttributes().posixPermissions, row.permissions) << row.why;
  }
}

TEST(Entry, NamesAreDecodedAsTheEntrySays) {
  EXPECT_EQ(entryOf({.name = "na\x8bve"})->path(), "naïve");
  EXPECT_EQ(entryOf({.name = "naïve", .flags = 0x0800})->path(), "naïve");
  EXPECT_EQ(entryOf({.name = "\xc7\xd1"})->path(platform::StringEncoding::dosKorean), "한");
  EXPECT_EQ(entryOf({.name = "\xc7"})->path(platform::StringEncoding::utf8), "");
  const auto undecodable = entryOf({.name = "\xff/", .flags = 0x0800});
  EXPECT_EQ(undecodable->path(), "");
  EXPECT_EQ(undecodable->type(), EntryType::file);
  EXPECT_EQ(entryOf({.name = "\xff/"})->type(), EntryType::directory) << "code page 437 decodes everything";
}

TEST(Entry, ExternalAttributesAreTheModeInTheUpperHalf) {
  EXPECT_EQ(externalAttributes(EntryType::file, 0644), 0100644U << 16);
  EXPECT_EQ(externalAttributes(EntryType::directory, 0755), 040755U << 16);
  EXPECT_EQ(externalAttributes(EntryType::symlink, 0120777), 0120777U << 16) << "type bits may be given too";
}

TEST(Entry, SizesAndChecksumComeFromTheRightRecord) {
  const Entry::DataDescriptor descriptor = {
      .crc32 = 0xD, .compressedSize = 1, .uncompressedSize = 2, .hasSignature = true};
  struct Case {
    const char* why;
    std::uint16_t flags;
    std::optional<Entry::DataDescriptor> descriptor;
    std::uint32_t checksum;
    std::int64_t compressed, uncompressed;
  };
  const Case cases[] = {
      {"plain", 0, std::nullopt, 0xC, 10, 20},
      {"streamed", 8, descriptor, 0xD, 1, 2},
      {"streamed, descriptor missing", 8, std::nullopt, 0, 10, 20},
  };
  for (const auto& row : cases) {
    for (const std::uint16_t method : {0, 8}) {
      const auto entry = entryOf({.flags = row.flags, .method = method, .descriptor = row.descriptor});
      EXPECT_EQ(entry->checksum(), row.checksum) << row.why;
      EXPECT_EQ(entry->compressedSize(), row.compressed) << row.why;
      EXPECT_EQ(entry->uncompressedSize(), row.uncompressed) << row.why;
      const std::int64_t stored = method == 0 ? row.uncompressed : row.compressed;
      EXPECT_EQ(entry->localRecordLength(), 30U + 1 + static_cast<std::uint64_t>(stored) + (row.descriptor ? 16 : 0))
          << row.why;
      EXPECT_EQ(entry->dataOffset(), 1000U + 30 + 1);
    }
  }
}

TEST(Entry, IsRefusedWhenEncryptedOrZIP64) {
  struct Case {
    std::uint16_t versionNeeded, flags;
    bool isMade;
  };
  const Case cases[] = {{44, 0, true}, {45, 0, false}, {20, 1, false}, {20, 0x0800, true}, {20, 0x0801, false}};
  for (const auto& row : cases) {
    EXPECT_EQ(entryOf({.versionNeeded = row.versionNeeded, .flags = row.flags}).has_value(), row.isMade)
        << row.versionNeeded << " " << row.flags;
  }
}

TEST(Entry, IsEqualByPathChecksumAndPlace) {
  EXPECT_EQ(*entryOf({}), *entryOf({.attributes = 5}));
  EXPECT_NE(*entryOf({}), *entryOf({.name = "g"}));
}

TEST(DOSDate, CountsFrom1980InUTC) {
  using std::chrono::sys_days;
  using namespace std::chrono_literals;
  struct Case {
    const char* why;
    Date date;
    unsigned dosDate, dosTime;
    Date back;
  };
  const Date first = sys_days(1980y / 1 / 1);
  const Date usual = sys_days(2021y / 5 / 6) + 7h + 8min + 9s;
  const Case cases[] = {
      {"the first", first, 0x0021, 0, first},
      {"odd seconds are cut", usual, 41 << 9 | 5 << 5 | 6, 7 << 11 | 8 << 5 | 4, usual - 1s},
      {"too early", sys_days(1975y / 3 / 4), 3 << 5 | 4, 0, sys_days(1980y / 3 / 4)},
      {"too late", sys_days(2150y / 3 / 4), 119 << 9 | 3 << 5 | 4, 0, sys_days(2099y / 3 / 4)},
      {"before 1970, with a fraction", sys_days(1969y / 12 / 31) + 23h + 59min + 59s + 999ms, 12 << 5 | 31,
       23 << 11 | 59 << 5 | 29, sys_days(1980y / 12 / 31) + 23h + 59min + 58s},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(dosDate(row.date), row.dosDate) << row.why;
    EXPECT_EQ(dosTime(row.date), row.dosTime) << row.why;
    EXPECT_EQ(date(dosDate(row.date), dosTime(row.date)), row.back) << row.why;
  }
}

TEST(DOSDate, FieldsOutOfRangeRunOverAsTheCalendarDoes) {
  using std::chrono::sys_days;
  using namespace std::chrono_literals;
  EXPECT_EQ(date(0, 0), sys_days(1979y / 11 / 30)) << "month 0, day 0";
  EXPECT_EQ(date(0x0021, 0xFFFF), sys_days(1980y / 1 / 1) + 31h + 63min + 62s);
}

}  // namespace
}  // namespace veltrik
