#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>

#include "Tests/Zip/ArchiveFixture.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace veltrik {
namespace {

using hostile::assembled;
using hostile::fileMember;
using platform::Data;
using platform::DataView;
using testing::ElementsAre;
using testing::Pair;

NewEntry file(std::size_t size) {
  return {.uncompressedSize = static_cast<std::uint32_t>(size)};
}

std::string contents(const Archive& archive, std::string_view path) {
  std::string text;
  const auto entry = archive[path];
  if (!entry) return "(no entry)";
  const std::uint32_t crc = archive.extract(*entry, [&](DataView block) { text += platform::textOf(block); });
  EXPECT_EQ(crc, entry->checksum());
  EXPECT_EQ(static_cast<std::int64_t>(text.size()), entry->uncompressedSize());
  return text;
}

class AddTest : public ChangingFixture {};

INSTANTIATE_TEST_SUITE_P(Places, AddTest, testing::Bool(), placeName);

TEST_P(AddTest, TheFirstEntryStandsAtTheStart) {
  openOn(Archive::EndOfCentralDirectoryRecord().data());
  archive_->addEntry("name", {.uncompressedSize = 5, .permissions = 0600}, from("hello"));
  const auto& end = archive_->endOfCentralDirectoryRecord();
  EXPECT_EQ(end.totalNumberOfEntriesInCentralDirectory, 1);
  EXPECT_EQ(end.totalNumberOfEntriesOnDisk, 1);
  EXPECT_EQ(end.sizeOfCentralDirectory, 46U + 4);
  EXPECT_EQ(end.offsetToStartOfCentralDirectory, 30U + 4 + 5);
  const Entry entry = *archive_->begin();
  EXPECT_EQ(entry.localFileHeader().versionNeededToExtract, 20);
  EXPECT_EQ(entry.localFileHeader().generalPurposeBitFlag, 0x0800);
  EXPECT_EQ(entry.centralDirectoryStructure().versionMadeBy, 0x0315);
  EXPECT_EQ(entry.centralDirectoryStructure().externalFileAttributes, 0100600U << 16);
  soundPaths();
}

TEST_P(AddTest, KeepsWhatIsThereAndAddsBehindIt) {
  openOn(assembled({.members = {fileMember("old", "old text")}, .prefix = "prefix", .comment = "a comment"}));
  const std::string large = hostile::randomText(1500000);
  std::vector<std::pair<std::string, std::string>> added;
  for (const std::string& text : {std::string(), std::string("x"), std::string(40000, 'r'), large}) {
    for (const auto method : {CompressionMethod::none, CompressionMethod::deflate}) {
      const std::string path = "f" + std::to_string(added.size());
      archive_->addEntry(path, file(text.size()), from(text), {.compressionMethod = method});
      added.emplace_back(path, text);
      soundPaths();
    }
  }
  EXPECT_EQ(contents(*archive_, "old"), "old text");
  for (const auto& [path, text] : added) EXPECT_EQ(contents(*archive_, path), text) << path;
  EXPECT_TRUE(bytes().starts_with("prefix"));
  EXPECT_TRUE(bytes().ends_with("a comment"));
}

TEST_P(AddTest, DirectoriesAndLinksAreStoredWhateverTheMethod) {
  openOn(Archive::EndOfCentralDirectoryRecord().data());
  std::vector<std::pair<std::int64_t, std::size_t>> asked;
  const auto noting = [&](std::int64_t position, std::span<std::byte> destination) {
    asked.emplace_back(position, destination.size());
    return from("target")(position, destination);
  };
  platform::Progress progress;
  const AddOptions options = {.compressionMethod = CompressionMethod::deflate, .progress = &progress};
  archive_->addEntry("d/", {.type = Entry::EntryType::directory}, noting, options);
  EXPECT_TRUE(progress.isFinished());
  archive_->addEntry("l", {.type = Entry::EntryType::symlink, .uncompressedSize = 6}, noting, options);
  EXPECT_EQ(progress.completedUnitCount(), 6);
  EXPECT_THAT(asked, ElementsAre(Pair(0, 0U), Pair(0, 6U)));
  const Entry directory = *(*archive_)["d/"];
  EXPECT_EQ(directory.type(), Entry::EntryType::directory);
  EXPECT_EQ(directory.fileAttributes().posixPermissions, 0755);
  EXPECT_EQ((*archive_)["l"]->type(), Entry::EntryType::symlink);
  EXPECT_EQ((*archive_)["l"]->localFileHeader().compressionMethod, 0);
  EXPECT_EQ(contents(*archive_, "l"), "target");
  soundPaths();
}

TEST_P(AddTest, StoredFilesAreAskedForInSteps) {
  openOn(Archive::EndOfCentralDirectoryRecord().data());
  std::vector<std::pair<std::int64_t, std::size_t>> asked;
  const auto noting = [&](std::int64_t position, std::span<std::byte> destination) {
    asked.emplace_back(position, destination.size());
    return destination.size();
  };
  archive_->addEntry("f", file(40000), noting, {.bufferSize = 16384});
  EXPECT_THAT(asked, ElementsAre(Pair(0, 16384U), Pair(16384, 16384U), Pair(32768, 7232U)));
  asked.clear();
  archive_->addEntry("empty", file(0), noting);
  EXPECT_TRUE(asked.empty());
  archive_->addEntry("short", file(10), from("four"));
  EXPECT_EQ((*archive_)["short"]->compressedSize(), 4) << "the provider gave less";
  EXPECT_EQ((*archive_)["short"]->uncompressedSize(), 10);
}

TEST_P(AddTest, WhatFailsInTheMiddleLeavesEveryByteAsItWas) {
  const Data before =
      assembled({.members = {fileMember("old", hostile::randomText(3000))}, .prefix = "", .comment = "comment"});
  // Small enough to be held back, larger than what is collected, and much larger.
  for (const std::size_t size : {100, 20000, 300000, 2000000}) {
    for (const auto method : {CompressionMethod::none, CompressionMethod::deflate}) {
      for (const bool isCancelled : {true, false}) {
        SCOPED_TRACE(testing::Message() << size << " cancelled " << isCancelled);
        openOn(before);
        const std::string text = hostile::randomText(size);
        platform::Progress progress;
        const auto failing = [&](std::int64_t position, std::span<std::byte> destination) {
          const bool isLast = static_cast<std::size_t>(position) + 16384 >= size;
          if (isLast && !isCancelled) throw std::out_of_range("the provider's own");
          if (isLast || static_cast<std::size_t>(position) + 2 * 16384 >= size) progress.cancel();
          return from(text)(position, destination);
        };
        const AddOptions options = {.compressionMethod = method, .progress = isCancelled ? &progress : nullptr};
        if (isCancelled && size > 16384) {
          EXPECT_EQ(failureOf([&] { archive_->addEntry("new", file(size), failing, options); }), "cancelledOperation");
          EXPECT_EQ(bytes(), platform::textOf(before));
        } else if (!isCancelled) {
          EXPECT_THROW(archive_->addEntry("new", file(size), failing, options), std::out_of_range);
          EXPECT_EQ(bytes(), platform::textOf(before));
        }
        // And the archive is good for another try.
        archive_->addEntry("again", file(size), from(text), {.compressionMethod = method});
        EXPECT_EQ(contents(*archive_, "again"), text);
        soundPaths();
      }
    }
  }
}

TEST_P(AddTest, RefusesBeforeTheFirstByteWhatTheFormatCannotHold) {
  const auto neverAsked = [](std::int64_t, std::span<std::byte>) -> std::size_t {
    ADD_FAILURE() << "nothing is to be read";
    return 0;
  };
  struct Case {
    const char* why;
    std::string path;
    std::uint32_t size;
    std::string want;
  };
  const Case cases[] = {
      {"name too long", std::string(65536, 'n'), 1, "invalidEntryPath"},
      {"name no UTF-8", "\xff", 1, "invalidEntryPath"},
      {"beyond 4 GiB", "f", 0xFFFFFFFF, "invalidStartOfCentralDirectoryOffset"},
  };
  const Data before = assembled({fileMember("old", "old")});
  for (const auto& row : cases) {
    openOn(before);
    EXPECT_EQ(failureOf([&] { archive_->addEntry(row.path, {.uncompressedSize = row.size}, neverAsked); }), row.want)
        << row.why;
    EXPECT_EQ(bytes(), platform::textOf(before)) << row.why;
  }
  archive_->addEntry(std::string(65535, 'n'), file(1), from("x"));
  EXPECT_EQ(archive_->endOfCentralDirectoryRecord().sizeOfCentralDirectory, 46U + 3 + 46 + 65535);
  soundPaths();
}

TEST_P(AddTest, RefusesADirectoryThatIsNotWhatTheEndRecordSays) {
  const std::string prefix(2 << 20, '#');
  const Data sound =
      assembled({.members = {fileMember("a", "1"), fileMember("b", "2")}, .prefix = prefix, .comment = ""});
  const std::size_t end = sound.size() - 22;
  struct Case {
    const char* why;
    std::size_t field;
    int change;
    std::string want;
  };
  const Case cases[] = {
      {"one entry too many", 10, 1, "unwritableArchive"},
      {"one too few", 10, -1, "unwritableArchive"},
      {"a byte too long", 12, 1, "invalidStartOfCentralDirectoryOffset"},
      {"a byte too short", 12, -1, "unwritableArchive"},
      {"starts later", 16, 1, "invalidStartOfCentralDirectoryOffset"},
      {"starts earlier", 16, -1, "unwritableArchive"},
      {"starts so much earlier that there is room for other things", 18, -0x20, "invalidStartOfCentralDirectoryOffset"},
  };
  for (const auto& row : cases) {
    Data damaged = sound;
    damaged[end + row.field] = static_cast<std::byte>(std::to_integer<int>(damaged[end + row.field]) + row.change);
    openOn(damaged);
    EXPECT_EQ(failureOf([&] { archive_->addEntry("c", file(1), from("3")); }), row.want) << row.why;
    EXPECT_EQ(bytes(), platform::textOf(damaged)) << row.why;
  }
}

TEST_P(AddTest, BytesBehindTheEndRecordGoAway) {
  Data trailing = assembled({fileMember("a", "1")});
  platform::append(trailing, Data(3000, std::byte{'t'}));
  openOn(trailing);
  archive_->addEntry("b", file(1), from("2"));
  soundPaths();
  EXPECT_LT(bytes().size(), 300U);
}

TEST(Adding, NeedsAnArchiveOpenForIt) {
  const auto archive = Archive::open(assembled({fileMember("a", "1")}));
  EXPECT_THAT([&] { archive->addEntry("b", file(1), from("2")); },
              testing::ThrowsMessage<ArchiveError>(
                  "unwritableArchive: entry 'b', path 'memory:': the archive is open for reading"));
}

// From the file system.

class AddItemTest : public ArchiveFixture {
 protected:
  AddItemTest() {
    std::filesystem::create_directories(root_ / "docs/sub");
    writeText(root_ / "docs/text", "some text");
    std::filesystem::create_symlink("text", root_ / "docs/link");
    std::filesystem::create_symlink("nowhere", root_ / "docs/dangling");
  }

  std::unique_ptr<Archive> archive_ = Archive::open(url("a.zip"), {.accessMode = ArchiveAccessMode::create});
};

TEST_F(AddItemTest, TakesNamesModesAndDates) {
  chmod((root_ / "docs/text").c_str(), 0751);
  const timeval times[] = {{1000000000, 0}, {1000000001, 500000}};
  ASSERT_EQ(utimes((root_ / "docs/text").c_str(), times), 0);
  std::vector<ItemToAdd> items;
  for (const char* path : {"docs", "docs/sub/", "docs/text", "docs/link", "docs/dangling"})
    items.push_back({path, url("")});
  addItems(*archive_, items, {.compressionMethod = CompressionMethod::deflate});
  std::vector<std::pair<std::string, Entry::EntryType>> found;
  for (const Entry& entry : *archive_) found.emplace_back(entry.path(), entry.type());
  using enum Entry::EntryType;
  EXPECT_THAT(found, ElementsAre(Pair("docs/", directory), Pair("docs/sub/", directory),
                                 Pair("docs/text", Entry::EntryType::file), Pair("docs/link", symlink),
                                 Pair("docs/dangling", symlink)));
  const auto text = (*archive_)["docs/text"];
  EXPECT_EQ(text->fileAttributes().posixPermissions, 0751);
  EXPECT_EQ(std::chrono::system_clock::to_time_t(text->fileAttributes().modificationDate), 1000000000);
  EXPECT_EQ(contents(*archive_, "docs/text"), "some text");
  EXPECT_EQ(contents(*archive_, "docs/dangling"), "nowhere");
}

TEST_F(AddItemTest, RefusesWhatItCannotTake) {
  ASSERT_EQ(mkfifo((root_ / "pipe").c_str(), 0600), 0);
  writeText(root_ / "large", "");
  std::filesystem::resize_file(root_ / "large", 1LL << 32);
  struct Case {
    std::string path, want;
  };
  const Case cases[] = {
      {"missing", "fileReadNoSuchFile"},
      {"docs/text/below", "fileReadNoSuchFile"},
      {"pipe", "fileReadUnknown"},
      {"large", "fileReadTooLarge"},
      {"a.zip", "invalidEntryPath"},
      {std::string("docs\0", 5), "fileReadInvalidFileName"},
      {std::string(300, 'n'), "fileNoSuchFile"},
  };
  const std::string before = readText(root_ / "a.zip");
  for (const auto& row : cases) {
    EXPECT_EQ(failureOf([&] { archive_->addEntry(row.path, url("")); }), row.want) << row.path;
    EXPECT_EQ(readText(root_ / "a.zip"), before);
  }
  std::filesystem::create_hard_link(root_ / "a.zip", root_ / "twin");
  EXPECT_EQ(failureOf([&] { archive_->addEntry("twin", url("")); }), "invalidEntryPath") << "by any name";
}

}  // namespace
}  // namespace veltrik
