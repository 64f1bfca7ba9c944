#include "VeltrikAppKit/Archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <ranges>

#include "Tests/Zip/ArchiveFixture.h"
#include "VeltrikAppKit/Data+CRC32.h"

namespace veltrik {
namespace {

using hostile::assembled;
using hostile::fileMember;
using hostile::Member;
using platform::Data;
using platform::DataView;
using platform::URL;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kCentralStart = 46;

std::vector<std::string> pathsOf(const Archive& archive) {
  std::vector<std::string> paths;
  for (const Entry& entry : archive) paths.push_back(entry.path());
  return paths;
}

Member encrypted(std::string name) {
  Member member = fileMember(std::move(name), "x");
  member.flags |= 1;
  return member;
}

class ArchiveTest : public ArchiveFixture {
 protected:
  std::unique_ptr<Archive> openFile(DataView bytes, ArchiveOptions options = {}) {
    writeText(root_ / "a.zip", platform::textOf(bytes));
    return Archive::open(url("a.zip"), options);
  }
};

TEST_F(ArchiveTest, OpensWhatEndsWithARecordNearItsEnd) {
  const std::string end(platform::textOf(Archive::EndOfCentralDirectoryRecord().data()));
  const auto withComment = [&](std::size_t size) {
    std::string bytes = end + std::string(size, 'c');
    bytes[20] = static_cast<char>(size & 0xFF);
    bytes[21] = static_cast<char>(size >> 8);
    return bytes;
  };
  struct Case {
    const char* why;
    std::string bytes;
    bool opens;
  };
  const Case cases[] = {
      {"empty archive", end, true},
      {"cut off", end.substr(0, 21), false},
      {"nothing", "", false},
      {"no archive", std::string(70000, 'x'), false},
      {"short comment", withComment(9), true},
      {"longest comment", withComment(65535), true},
      {"comment cut off", withComment(600).substr(0, 500), false},
      {"bytes behind it", end + std::string(65999 - 22, 'x'), true},
      {"too many bytes behind it", end + std::string(66000 - 22, 'x'), false},
      {"prefix", std::string(100000, 'p') + end, true},
      {"a signature in the comment wins and leads nowhere",
       withComment(40).replace(30, 4, "PK\x05\x06").replace(50, 2, "\xff\xff"), false},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.why);
    const Data bytes = platform::copyOf(platform::bytesOf(row.bytes));
    for (const auto mode : {ArchiveAccessMode::read, ArchiveAccessMode::update}) {
      EXPECT_EQ(openFile(bytes, {.accessMode = mode}) != nullptr, row.opens);
      EXPECT_EQ(Archive::open(bytes, {.accessMode = mode}) != nullptr, row.opens);
    }
    if (row.opens) {
      EXPECT_THAT(pathsOf(*openFile(bytes)), IsEmpty());
    }
  }
}

TEST_F(ArchiveTest, OpensNothingThatIsNoFile) {
  EXPECT_EQ(Archive::open(url("missing")), nullptr);
  EXPECT_EQ(Archive::open(url("")), nullptr);
  EXPECT_EQ(Archive::open(*URL::fromString("https://example.org/a.zip")), nullptr);
  EXPECT_EQ(Archive::open(*URL::fromString("file:///tmp%00")), nullptr);
}

TEST_F(ArchiveTest, MakesNewArchivesOnly) {
  const auto made = Archive::open(url("new.zip"), {.accessMode = ArchiveAccessMode::create});
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->url(), url("new.zip"));
  EXPECT_EQ(made->data(), std::nullopt);
  EXPECT_EQ(readText(root_ / "new.zip").size(), 22U);
  writeText(root_ / "there.zip", "mine");
  EXPECT_EQ(Archive::open(url("there.zip"), {.accessMode = ArchiveAccessMode::create}), nullptr);
  EXPECT_EQ(readText(root_ / "there.zip"), "mine");
}

TEST(MemoryArchive, IsMadeOfNothingOrOpenedOnBytes) {
  const auto made = Archive::open(Data(), {.accessMode = ArchiveAccessMode::create});
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->url().absoluteString(), "memory:");
  EXPECT_EQ(made->data(), Archive::EndOfCentralDirectoryRecord().data());
  const Data bytes = assembled({fileMember("a", "1"), fileMember("b", "2")});
  EXPECT_THAT(pathsOf(*Archive::open(bytes)), ElementsAre("a", "b"));
  EXPECT_EQ(Archive::open(bytes)->data(), bytes);
}

TEST_F(ArchiveTest, IsARangeOfEntries) {
  static_assert(std::ranges::input_range<const Archive&>);
  const auto archive =
      openFile(assembled({fileMember("a", "1"), hostile::directoryMember("d/"), fileMember("d/b", "22")}));
  EXPECT_THAT(pathsOf(*archive), ElementsAre("a", "d/", "d/b"));
  EXPECT_EQ(std::ranges::count(*archive, Entry::EntryType::file, &Entry::type), 2);
  const auto isLong = [](const Entry& entry) { return entry.uncompressedSize() == 2; };
  for (const Entry& entry : *archive | std::views::filter(isLong)) EXPECT_EQ(entry.path(), "d/b");
}

TEST_F(ArchiveTest, EndsBeforeWhatItCannotRead) {
  const Member first = fileMember("a", "1");
  const Member third = fileMember("c", "3");
  Member zip64 = fileMember("b", "2");
  zip64.versionNeeded = 45;
  struct Case {
    const char* why;
    Data bytes;
    std::vector<std::string> want;
  };
  Data badLocal = assembled({first, third});
  badLocal[30 + 1 + 1] = std::byte{'X'};  // the second local header's signature
  Data badCentral = assembled({first, third});
  badCentral[2 * (30 + 1 + 1) + kCentralStart + 1] = std::byte{'X'};
  Data fewer = assembled({first, third});
  fewer[fewer.size() - 12] = std::byte{1};
  Data more = assembled({first, third});
  more[more.size() - 12] = std::byte{9};
  const Case cases[] = {
      {"encrypted", assembled({first, encrypted("b"), third}), {"a"}},
      {"ZIP64", assembled({first, zip64, third}), {"a"}},
      {"bad local header", badLocal, {"a"}},
      {"bad structure", badCentral, {"a"}},
      {"fewer counted than there are", fewer, {"a"}},
      {"more counted than there are", more, {"a", "c"}},
  };
  for (const auto& row : cases) EXPECT_EQ(pathsOf(*openFile(row.bytes)), row.want) << row.why;
}

TEST_F(ArchiveTest, SkipsWithoutLookingAtWhatItPasses) {
  const auto pathAfter = [](const Archive& archive, std::size_t skipped) {
    auto at = archive.begin();
    at.skip(skipped);
    return at == archive.end() ? "none" : at->path();
  };
  const auto archive = openFile(assembled({fileMember("a", "1"), encrypted("b"), fileMember("c", "3")}));
  const char* const want[] = {"a", "none", "c", "none", "none"};
  for (std::size_t count = 0; count < std::size(want); ++count)
    EXPECT_EQ(pathAfter(*archive, count), want[count]) << count;
  Data damaged = assembled({fileMember("a", "1"), fileMember("b", "2"), fileMember("c", "3")});
  damaged[3 * (30 + 1 + 1) + kCentralStart + 1] = std::byte{'X'};
  EXPECT_EQ(pathAfter(*openFile(damaged), 2), "none");
}

TEST_F(ArchiveTest, AnEntryHasNothingOfTheOneBefore) {
  Member streamed = fileMember("first with a long name", "abc");
  streamed.flags |= 8;
  streamed.localExtra = "extra";
  streamed.descriptor = std::string("PK\x07\x08\x07\0\0\0\x03\0\0\0\x05\0\0\0", 16);
  const auto archive = openFile(assembled({streamed, fileMember("b", "22")}));
  auto at = archive->begin();
  const Entry first = *at;
  ++at;
  EXPECT_FALSE(at->dataDescriptor());
  EXPECT_EQ(at->localFileHeader().variableData, platform::copyOf(platform::bytesOf("b")));
  EXPECT_EQ(at->uncompressedSize(), 2);
  EXPECT_EQ(first.path(), "first with a long name");
  EXPECT_EQ(first.uncompressedSize(), 5);
}

TEST_F(ArchiveTest, LooksUpTheFirstOfEqualPaths) {
  Member korean = fileMember("\xc7\xd1", "k");
  korean.flags = 0;
  const Data bytes = assembled({fileMember("a", "1"), fileMember("a", "22"), korean, encrypted("e")});
  const auto archive = openFile(bytes);
  EXPECT_EQ((*archive)["a"]->uncompressedSize(), 1);
  EXPECT_TRUE((*archive)["╟╤"]);
  for (const char* path : {"", "A", "a/", "e", "한"}) EXPECT_FALSE((*archive)[path]) << path;
  const auto preferring = openFile(bytes, {.preferredEncoding = platform::StringEncoding::dosKorean});
  EXPECT_TRUE((*preferring)["한"]);
  EXPECT_EQ(preferring->preferredEncoding(), platform::StringEncoding::dosKorean);
}

TEST_F(ArchiveTest, CountsUnitsOfWork) {
  const auto archive = openFile(
      assembled({fileMember("f", "12345"), hostile::directoryMember("d/"), hostile::linkMember("l", "target")}));
  EXPECT_EQ(archive->totalUnitCountForReading(*(*archive)["f"]), 5);
  EXPECT_EQ(archive->totalUnitCountForReading(*(*archive)["d/"]), 1);
  EXPECT_EQ(archive->totalUnitCountForReading(*(*archive)["l"]), 6);
  EXPECT_EQ(archive->totalUnitCountForRemoving(*(*archive)["f"]), (30 + 2) + (30 + 1 + 6));
  EXPECT_EQ(archive->totalUnitCountForAddingItem(url("a.zip")),
            static_cast<std::int64_t>(readText(root_ / "a.zip").size()));
  EXPECT_EQ(archive->totalUnitCountForAddingItem(url("")), 1);
  EXPECT_EQ(archive->totalUnitCountForAddingItem(url("missing")), -1);
  std::filesystem::resize_file(root_ / "a.zip", 1LL << 32);
  EXPECT_EQ(archive->totalUnitCountForAddingItem(url("a.zip")), -1) << "too large";
  Member liar = fileMember("liar", "abc");
  liar.uncompressedSize = 0xFFFFFFF0;
  const auto damaged = openFile(assembled({liar}));
  EXPECT_EQ(damaged->totalUnitCountForRemoving(*damaged->begin()), 0);
}

// Extraction to a consumer.

struct Extracted {
  std::vector<std::size_t> blocks;
  std::string text;
  std::uint32_t crc = 0;
};

Extracted extracted(const Archive& archive, const Entry& entry, const ExtractOptions& options = {}) {
  Extracted result;
  result.crc = archive.extract(
      entry,
      [&](DataView block) {
        result.blocks.push_back(block.size());
        result.text += platform::textOf(block);
      },
      options);
  return result;
}

TEST_F(ArchiveTest, StoredFilesComeInBlocksOfTheBuffersSize) {
  struct Case {
    std::size_t size;
    std::uint32_t bufferSize;
    std::vector<std::size_t> want;
  };
  const Case cases[] = {
      {40000, 16384, {16384, 16384, 7232}},
      {0, 16384, {}},
      {5, 2, {2, 2, 1}},
      {16384, 0, {16384}},
      {5, 0xFFFFFFFF, {5}},
      {200000, 150000, {150000, 50000}},
  };
  for (const auto& row : cases) {
    const std::string text = hostile::dullText(row.size);
    for (const bool inMemory : {true, false}) {
      const Data bytes = assembled({fileMember("f", text)});
      const auto archive = inMemory ? Archive::open(bytes) : openFile(bytes);
      const Extracted result = extracted(*archive, *archive->begin(), {.bufferSize = row.bufferSize});
      EXPECT_EQ(result.blocks, row.want) << row.size;
      EXPECT_EQ(result.text, text);
      EXPECT_EQ(result.crc, crc32(platform::bytesOf(text)));
    }
  }
}

TEST(Extraction, EveryTypeHasItsContentsAndChecksum) {
  const std::string text = hostile::dullText(100000);
  Member deflatedLink = hostile::deflatedMember("z", "to/there");
  deflatedLink.externalAttributes = 0120777U << 16;
  const auto archive =
      Archive::open(assembled({hostile::deflatedMember("f", text), hostile::directoryMember("d/"),
                               hostile::linkMember("l", "to/there"), fileMember("s", "stored"), deflatedLink}));
  struct Case {
    const char* path;
    std::string text;
    bool keepsChecksum;  // although it is to be skipped
  };
  const Case cases[] = {
      {"f", text, false}, {"s", "stored", false}, {"l", "to/there", true}, {"z", "to/there", true}, {"d/", "", true}};
  for (const auto& row : cases) {
    const Entry entry = *(*archive)[row.path];
    const std::uint32_t want = crc32(platform::bytesOf(row.text));
    const Extracted result = extracted(*archive, entry);
    EXPECT_EQ(result.text, row.text) << row.path;
    EXPECT_EQ(result.crc, want) << row.path;
    EXPECT_EQ(extracted(*archive, entry, {.skipCRC32 = true}).crc, row.keepsChecksum ? want : 0) << row.path;
  }
  EXPECT_THAT(extracted(*archive, *(*archive)["d/"]).blocks, ElementsAre(0U));
  EXPECT_THAT(extracted(*archive, *(*archive)["l"]).blocks, ElementsAre(8U));
}

TEST(Extraction, ShortArchivesYieldLess) {
  Member liar = fileMember("f", "abc");
  liar.uncompressedSize = 0xFFFFFFFF;
  const auto archive = Archive::open(assembled({liar}));
  const Extracted result = extracted(*archive, *archive->begin());
  EXPECT_TRUE(result.text.starts_with("abc"));
  EXPECT_LT(result.text.size(), 500U);
  EXPECT_NE(result.crc, archive->begin()->checksum());
}

TEST(Extraction, RefusesOtherMethodsBeforeAnything) {
  for (const std::uint32_t mode : {0100644U, 0120777U}) {
    Member member = fileMember("f", "abc");
    member.method = 12;
    member.externalAttributes = mode << 16;
    const auto archive = Archive::open(assembled({member}));
    EXPECT_THAT([&] { archive->extract(*archive->begin(), [](DataView) { FAIL() << "nothing is to be delivered"; }); },
                testing::ThrowsMessage<ArchiveError>("invalidCompressionMethod: entry 'f', path 'memory:': method 12"));
  }
}

TEST(Extraction, ProgressCountsEveryByteAndStopsWhenCancelled) {
  const std::string text = hostile::dullText(40000);
  const auto archive = Archive::open(assembled({fileMember("s", text), hostile::deflatedMember("f", text),
                                                hostile::directoryMember("d/"), hostile::linkMember("l", "12345")}));
  for (const Entry& entry : *archive) {
    platform::Progress progress;
    extracted(*archive, entry, {.progress = &progress});
    EXPECT_EQ(progress.totalUnitCount(), archive->totalUnitCountForReading(entry)) << entry.path();
    EXPECT_EQ(progress.completedUnitCount(), progress.totalUnitCount()) << entry.path();
  }
  for (const char* path : {"s", "f"}) {
    const Entry entry = *(*archive)[path];
    platform::Progress cancelled;
    cancelled.cancel();
    EXPECT_EQ(failureOf([&] { archive->extract(entry, [](DataView) { FAIL(); }, {.progress = &cancelled}); }),
              "cancelledOperation");
    platform::Progress during;
    std::size_t blocks = 0;
    EXPECT_THROW(archive->extract(entry,
                                  [&](DataView) {
                                    ++blocks;
                                    during.cancel();
                                  },
                                  {.progress = &during}),
                 ArchiveError);
    EXPECT_EQ(blocks, 1U) << path;
  }
}

TEST(Extraction, PassesOnWhatTheConsumerThrows) {
  const auto archive = Archive::open(assembled({fileMember("s", "x")}));
  EXPECT_THROW(archive->extract(*archive->begin(), [](DataView) { throw std::out_of_range("full"); }),
               std::out_of_range);
}

// Extraction to disk.

class ExtractionToDisk : public ArchiveTest {
 protected:
  static struct stat status(const std::filesystem::path& path) {
    struct stat result {};
    EXPECT_EQ(lstat(path.c_str(), &result), 0) << path;
    return result;
  }
};

TEST_F(ExtractionToDisk, MakesItemsWithParentsPermissionsAndDate) {
  Member program = fileMember("program", "#!");
  program.externalAttributes = 0104751U << 16;
  const auto archive =
      openFile(assembled({program, hostile::directoryMember("d/"), hostile::linkMember("l", "program")}));
  umask(022);
  for (const Entry& entry : *archive) archive->extract(entry, url("deep/down/" + entry.path()));
  const auto place = root_ / "deep/down";
  EXPECT_EQ(readText(place / "program"), "#!");
  EXPECT_EQ(status(place / "program").st_mode, 0104751U);
  EXPECT_EQ(std::filesystem::read_symlink(place / "l"), "program");
  EXPECT_TRUE(S_ISDIR(status(place / "d").st_mode));
  const auto changed = std::chrono::system_clock::to_time_t(archive->begin()->fileAttributes().modificationDate);
  for (const char* name : {"program", "l", "d"}) EXPECT_EQ(status(place / name).st_mtime, changed) << name;
  archive->extract(*archive->begin(), url("masked"), {.maskSpecialPermissions = true});
  EXPECT_EQ(status(root_ / "masked").st_mode, 0100751U);
}

TEST_F(ExtractionToDisk, NeverReplacesAnything) {
  const auto archive =
      openFile(assembled({fileMember("f", "new"), hostile::linkMember("l", "x"), hostile::directoryMember("d/")}));
  writeText(root_ / "file", "old");
  std::filesystem::create_symlink("nowhere", root_ / "dangling");
  std::filesystem::create_directory(root_ / "directory");
  std::filesystem::create_symlink("directory", root_ / "linked");
  const auto code = [&](const char* path, const char* place) {
    try {
      archive->extract(*(*archive)[path], url(place));
      return std::string("done");
    } catch (const platform::CocoaError& error) {
      EXPECT_EQ(error.path(), (root_ / place).string());
      EXPECT_EQ(error.entry(), path);
      return std::string(error.name());
    }
  };
  for (const char* place : {"file", "dangling", "directory", "linked"}) {
    EXPECT_EQ(code("f", place), "fileWriteFileExists") << place;
    EXPECT_EQ(code("l", place), "fileWriteFileExists") << place;
  }
  EXPECT_EQ(code("d/", "directory"), "done") << "a directory may be there";
  EXPECT_EQ(code("d/", "linked"), "fileWriteFileExists") << "but not a link to one";
  EXPECT_EQ(code("d/", "file"), "fileWriteFileExists");
  for (const std::string& place : {std::string("file/below"), std::string(300, 'n')})
    EXPECT_THROW(archive->extract(*archive->begin(), url(place)), platform::CocoaError) << place;
  EXPECT_EQ(readText(root_ / "file"), "old");
  EXPECT_FALSE(std::filesystem::exists(root_ / "nowhere"));
}

TEST_F(ExtractionToDisk, LeavesWhatThereIsOfAFileWhenItFails) {
  const std::string text = hostile::dullText(100000);
  const auto archive = openFile(assembled({fileMember("f", text)}));
  platform::Progress cancelled;
  cancelled.cancel();
  EXPECT_THROW(archive->extract(*archive->begin(), url("out"), {.progress = &cancelled}), ArchiveError);
  EXPECT_EQ(readText(root_ / "out"), "");

  Member damaged = hostile::deflatedMember("g", text);
  damaged.data.resize(damaged.data.size() / 2);
  const auto broken = openFile(assembled({damaged}));
  EXPECT_THROW(broken->extract(*broken->begin(), url("half")), CompressionError);
  const std::string half = readText(root_ / "half");
  EXPECT_TRUE(text.starts_with(half));
  EXPECT_GT(half.size(), 1000U);
}

TEST_F(ExtractionToDisk, CopiesWhatIsStoredUnseen) {
  const std::string text = hostile::dullText(3000000);
  const Data bytes = assembled({fileMember("stored", text), hostile::deflatedMember("deflated", text)});
  const std::unique_ptr<Archive> archives[] = {openFile(bytes), Archive::open(bytes)};
  for (const auto& archive : archives) {
    for (const Entry& entry : *archive) {
      for (const bool isWatched : {false, true}) {
        platform::Progress progress;
        const ExtractOptions options = {.skipCRC32 = true, .progress = isWatched ? &progress : nullptr};
        EXPECT_EQ(archive->extract(entry, url("out"), options), 0U);
        EXPECT_TRUE(readText(root_ / "out") == text) << entry.path();
        EXPECT_EQ(progress.completedUnitCount(), isWatched ? 3000000 : 0);
        std::filesystem::remove(root_ / "out");
      }
    }
  }
}

TEST_F(ExtractionToDisk, RefusesLinkTargetsThatAreNoTextOrTooLong) {
  const std::string huge(70000, 't');
  Member deflated = hostile::deflatedMember("deflated", huge);
  deflated.externalAttributes = 0120777U << 16;
  const auto archive =
      openFile(assembled({hostile::linkMember("bytes", "\xff\xfe"), hostile::linkMember("nul", std::string("a\0b", 3)),
                          hostile::linkMember("huge", huge), deflated}));
  for (const Entry& entry : *archive)
    EXPECT_EQ(failureOf([&] { archive->extract(entry, url("l")); }), "invalidEntryPath") << entry.path();
  EXPECT_FALSE(std::filesystem::is_symlink(root_ / "l"));
}

}  // namespace
}  // namespace veltrik
