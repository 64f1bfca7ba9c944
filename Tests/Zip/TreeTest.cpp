#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>

#include "Tests/Zip/ArchiveFixture.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace veltrik {
namespace {

namespace fs = std::filesystem;
using hostile::assembled;
using hostile::directoryMember;
using hostile::fileMember;
using hostile::linkMember;
using hostile::Member;
using platform::CocoaError;
using platform::Progress;
using platform::URL;
using testing::ElementsAre;

/// What a tree holds: path to type, permissions, date and contents.
std::map<std::string, std::string> described(const fs::path& root) {
  std::map<std::string, std::string> items;
  for (const auto& item : fs::recursive_directory_iterator(root)) {
    struct stat status {};
    lstat(item.path().c_str(), &status);
    std::string text = std::to_string(status.st_mode) + "@" + std::to_string(status.st_mtime / 2) + ":";
    if (item.is_symlink()) {
      text += fs::read_symlink(item.path()).string();
    } else if (item.is_regular_file()) {
      text += readText(item.path());
    }
    items[fs::relative(item.path(), root).string()] = text;
  }
  return items;
}

class TreeTest : public ArchiveFixture {
 protected:
  TreeTest() { umask(022); }
  void makeTree() const {
    fs::create_directories(root_ / "tree/a/b");
    fs::create_directories(root_ / "tree/empty");
    writeText(root_ / "tree/a/b/deep", std::string(50000, 'd'));
    writeText(root_ / "tree/a/run", "#!/bin/sh\n");
    writeText(root_ / "tree/한글 이름", "");
    fs::create_symlink("a/run", root_ / "tree/link");
    fs::create_symlink("..", root_ / "tree/a/up");
    chmod((root_ / "tree/a/run").c_str(), 0755);
    chmod((root_ / "tree/empty").c_str(), 0700);
    for (const char* name : {"a/b/deep", "link", "a/up", "a/b", "a", "empty"}) {
      const timespec times[] = {{1000000000, 0}, {1000000000, 0}};
      utimensat(AT_FDCWD, (root_ / "tree" / name).c_str(), times, AT_SYMLINK_NOFOLLOW);
    }
  }
  /// Enough for them to be worked on ahead, of sizes around those of blocks and of what is left to its turn.
  void makeManyFiles() const {
    const std::size_t sizes[] = {0, 1, 3000, 16383, 16384, 16385, 40000, 131072, 131073, 1 << 20, (1 << 20) + 1};
    for (int folder = 0; folder < 8; ++folder) {
      const fs::path path = root_ / "tree" / ("many" + std::to_string(folder));
      fs::create_directories(path);
      for (const std::size_t size : sizes) {
        if (size >= 1 << 20 && folder > 0) continue;
        std::string text;
        while (text.size() < size) text += std::to_string(text.size() * 7919 % 1000 + static_cast<unsigned>(folder));
        text.resize(size);
        writeText(path / std::to_string(size), text);
      }
      const timespec times[] = {{1000000000, 0}, {1000000000, 0}};
      utimensat(AT_FDCWD, path.c_str(), times, 0);
    }
  }
  /// Files of one folder, in order, with a directory entry before them.
  static std::vector<Member> manyMembers(const std::string& folder) {
    std::vector<Member> members = {directoryMember(folder + "/")};
    for (int number = 100; number < 200; ++number) {
      const std::string name = folder + "/" + std::to_string(number);
      members.push_back(number % 2 == 0 ? fileMember(name, name) : hostile::deflatedMember(name, name));
    }
    return members;
  }
  void write(std::vector<Member> members) const {
    writeText(root_ / "a.zip", platform::textOf(assembled(std::move(members))));
  }
  std::vector<std::string> entries() const {
    std::vector<std::string> paths;
    const auto archive = Archive::open(url("a.zip"));
    for (const Entry& entry : *archive) paths.push_back(entry.path());
    return paths;
  }
};

/// Whatever ends the work at one of many entries: those before it are there, those behind it are not.
TEST_F(TreeTest, WhatEndsUnpackingLeavesNothingOfLaterEntries) {
  struct Case {
    std::string failure;
    std::function<void(Member&)> spoil;        ///< entry 150
    std::function<void(Progress&)> interrupt;  ///< after entry 149
    std::string left;                          ///< of entry 150
    std::string path;                          ///< that the error names
  };
  const Case cases[] = {
      {"fileWriteFileExists", {}, [&](Progress&) { writeText(root_ / "out/d/150", "mine"); }, "mine", "out/d/150"},
      {"cancelledOperation", {}, [](Progress& progress) { progress.cancel(); }, "", "a.zip"},
      {"invalidCompressionMethod", [](Member& member) { member.method = 12; }, {}, "nothing", "a.zip"},
      {"corruptedData", [](Member& member) { member.method = 8; }, {}, "", "a.zip"},
      {"fileReadInvalidFileName", [](Member& member) { member.name = "../150"; }, {}, "nothing", "out/../150"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.failure);
    fs::remove_all(root_ / "out");
    std::vector<Member> members = manyMembers("d");
    if (row.spoil) row.spoil(members[51]);
    write(members);
    Progress progress;
    const auto extracted = [&](const Entry& entry, std::uint32_t) {
      if (entry.path() == "d/149" && row.interrupt) row.interrupt(progress);
    };
    EXPECT_THAT([&] { unzipItem(url("a.zip"), url("out"), {.progress = &progress, .extracted = extracted}); },
                testing::ThrowsMessage<std::exception>(testing::StartsWith(
                    row.failure + ": entry '" + members[51].name + "', path '" + (root_ / row.path).string() + "'")));
    for (int number = 100; number < 200; ++number) {
      const std::string name = std::to_string(number);
      const fs::path path = root_ / "out/d" / name;
      const std::string left = fs::exists(path) ? readText(path) : "nothing";
      EXPECT_EQ(left, number < 150 ? "d/" + name : number == 150 ? row.left : "nothing") << name;
    }
  }
}

TEST_F(TreeTest, FilesThatAreNotWhatTheyShouldBeAreUnpackedAllTheSame) {
  std::vector<Member> members = manyMembers("d");
  members.erase(members.begin());  // The directory is made for the first file.
  // Far enough behind the first one for the directory to be there when their turn comes ahead.
  members[60].uncompressedSize = 1;
  members[61].uncompressedSize = 1'000'000;
  members[63].crc = 0;
  members[65].uncompressedSize = 1;
  write(members);
  std::map<std::string, bool> isSound;
  unzipItem(url("a.zip"), url("out"), {.extracted = [&](const Entry& entry, std::uint32_t checksum) {
              isSound[entry.path()] = checksum == entry.checksum();
            }});
  EXPECT_EQ(readText(root_ / "out/d/160"), "d") << "stored: as much as it says";
  EXPECT_EQ(readText(root_ / "out/d/161"), "d/161") << "deflated: to the end of the stream";
  EXPECT_EQ(readText(root_ / "out/d/163"), "d/163");
  EXPECT_EQ(readText(root_ / "out/d/165"), "d/165") << "deflated: all of it";
  for (const auto& [path, sound] : isSound) EXPECT_EQ(sound, path != "d/160" && path != "d/163") << path;
}

TEST_F(TreeTest, GoesInAndComesOutAsItWas) {
  makeTree();
  for (const bool hasMany : {false, true}) {
    if (hasMany) makeManyFiles();
    for (const auto method : {CompressionMethod::none, CompressionMethod::deflate}) {
      for (const bool isWatched : {false, true}) {
        Progress in;
        Progress out;
        zipItem(url("tree"), url("a.zip"),
                {.shouldKeepParent = false, .compressionMethod = method, .progress = isWatched ? &in : nullptr});
        std::vector<std::string> told;
        unzipItem(
            url("a.zip"), url("out"),
            {.progress = isWatched ? &out : nullptr, .extracted = [&](const Entry& entry, std::uint32_t checksum) {
               EXPECT_EQ(checksum, entry.checksum()) << entry.path();
               told.push_back(entry.path());
             }});
        EXPECT_EQ(described(root_ / "out"), described(root_ / "tree"));
        std::vector<std::string> want;
        const auto archive = Archive::open(url("a.zip"));
        for (const auto type : {Entry::EntryType::directory, Entry::EntryType::file, Entry::EntryType::symlink})
          for (const Entry& entry : *archive)
            if (entry.type() == type) want.push_back(entry.path());
        EXPECT_EQ(told, want);
        EXPECT_EQ(in.isFinished() && out.isFinished(), isWatched);
        EXPECT_EQ(out.totalUnitCount(), in.totalUnitCount());
        EXPECT_EQ(out.completedUnitCount(), in.completedUnitCount());
        // 50,000 and 10 bytes, links of 5 and 2, and three directories.
        if (isWatched && !hasMany) {
          EXPECT_EQ(in.completedUnitCount(), 50000 + 10 + 5 + 2 + 3);
        }
        fs::remove_all(root_ / "out");
        fs::remove(root_ / "a.zip");
      }
    }
  }
}

TEST_F(TreeTest, EntriesAreNamedFromTheSourceOrItsParent) {
  makeTree();
  zipItem(url("tree"), url("a.zip"), {.shouldKeepParent = false});
  EXPECT_THAT(entries(), ElementsAre("a/", "a/b/", "a/b/deep", "a/run", "a/up", "empty/", "link", "한글 이름"));
  fs::remove(root_ / "a.zip");
  zipItem(url("tree/"), url("a.zip"), {.shouldKeepParent = true});
  EXPECT_THAT(entries(), ElementsAre("tree/a/", "tree/a/b/", "tree/a/b/deep", "tree/a/run", "tree/a/up", "tree/empty/",
                                     "tree/link", "tree/한글 이름"));
  for (const char* single : {"a/run", "link"}) {
    fs::remove(root_ / "a.zip");
    Progress progress;
    zipItem(url(std::string("tree/") + single), url("a.zip"), {.progress = &progress});
    EXPECT_THAT(entries(), ElementsAre(fs::path(single).filename().string()));
    EXPECT_TRUE(progress.isFinished());
  }
}

TEST_F(TreeTest, ABatchIsByteForByteWhatSingleAdditionsMake) {
  makeTree();
  makeManyFiles();
  zipItem(url("tree"), url("a.zip"), {.shouldKeepParent = false, .compressionMethod = CompressionMethod::deflate});
  const auto single = Archive::open(url("b.zip"), {.accessMode = ArchiveAccessMode::create});
  for (const std::string& path : platform::FileManager().subpathsOfDirectory((root_ / "tree").string())) {
    single->addEntry(path, url("tree"), {.compressionMethod = CompressionMethod::deflate});
  }
  EXPECT_EQ(readText(root_ / "a.zip"), readText(root_ / "b.zip"));
}

TEST_F(TreeTest, PackingRefusesBadPlaces) {
  makeTree();
  writeText(root_ / "there", "mine");
  EXPECT_EQ(failureOf([&] { zipItem(url("missing"), url("a.zip")); }), "fileReadNoSuchFile");
  EXPECT_EQ(failureOf([&] { zipItem(url("tree"), url("there")); }), "fileWriteFileExists");
  EXPECT_EQ(failureOf([&] { zipItem(url("tree"), url("missing/a.zip")); }), "unwritableArchive");
  EXPECT_EQ(failureOf([&] { zipItem(url("tree"), url("tree/a.zip")); }), "invalidEntryPath");
  EXPECT_EQ(readText(root_ / "there"), "mine");
}

TEST_F(TreeTest, WhatEndsPackingLeavesTheEntriesBeforeIt) {
  makeManyFiles();
  fs::create_directories(root_ / "few");
  writeText(root_ / "few/1", "one");
  ASSERT_EQ(mkfifo((root_ / "few/2").c_str(), 0600), 0);
  writeText(root_ / "few/3", "three");
  EXPECT_EQ(failureOf([&] { zipItem(url("few"), url("a.zip"), {.shouldKeepParent = false}); }), "fileReadUnknown");
  EXPECT_THAT(entries(), ElementsAre("1"));
  for (const char* source : {"few", "tree"}) {
    fs::remove(root_ / "a.zip");
    Progress cancelled;
    cancelled.cancel();
    EXPECT_EQ(failureOf([&] { zipItem(url(source), url("a.zip"), {.progress = &cancelled}); }), "cancelledOperation");
    EXPECT_LE(entries().size(), 2U) << "a folder and an empty file at most";
  }
  fs::remove(root_ / "a.zip");
  EXPECT_EQ(failureOf([&] { zipItem(url("tree"), url("tree/many3/999.zip")); }), "invalidEntryPath") << "the archive";
  fs::remove(root_ / "tree/many3/999.zip");
  writeText(root_ / "tree/many5/0a", "");
  fs::resize_file(root_ / "tree/many5/0a", 1LL << 32);
  Progress progress;
  EXPECT_EQ(failureOf([&] { zipItem(url("tree"), url("a.zip"), {.shouldKeepParent = false, .progress = &progress}); }),
            "fileReadTooLarge");
  EXPECT_EQ(entries().back(), "many5/0");
}

TEST_F(TreeTest, UnpackingRefusesBadPlaces) {
  write({fileMember("f", "x")});
  writeText(root_ / "none.zip", "nothing");
  writeText(root_ / "file", "mine");
  EXPECT_EQ(failureOf([&] { unzipItem(url("missing"), url("out")); }), "fileReadNoSuchFile");
  EXPECT_EQ(failureOf([&] { unzipItem(url("none.zip"), url("out")); }), "unreadableArchive");
  EXPECT_EQ(failureOf([&] { unzipItem(url("a.zip"), url("file")); }), "fileWriteFileExists");
  EXPECT_EQ(readText(root_ / "file"), "mine");
}

TEST_F(TreeTest, DirectoriesComeFirstLinksLastAndNamesAreDecodedAsAsked) {
  Member korean = fileMember("a/\xc7\xd1\xb1\xdb", "text");
  korean.flags = 0;
  write({linkMember("a/l", "한글"), korean, directoryMember("a/")});
  unzipItem(url("a.zip"), url("out"), {.preferredEncoding = platform::StringEncoding::dosKorean});
  EXPECT_EQ(readText(root_ / "out/a/l"), "text");
}

TEST_F(TreeTest, LinksAreNeverWrittenThrough) {
  fs::create_directory(root_ / "outside");
  const std::vector<Member> archives[] = {{linkMember("d", "../outside"), fileMember("d/f", "x")},
                                          {linkMember("d", "../outside"), linkMember("d/l", "x")},
                                          {fileMember("standing/f", "x")},
                                          {fileMember("standing/e/f", "x")},
                                          {directoryMember("standing/e/")},
                                          {directoryMember("standing/")},
                                          {linkMember("standing/l", "x")},
                                          {fileMember("real/../standing/f", "x")}};
  for (const auto& members : archives) {
    fs::remove_all(root_ / "out");
    fs::create_directories(root_ / "out/real");
    fs::create_symlink("../outside", root_ / "out/standing");
    write(members);
    EXPECT_THAT(failureOf([&] { unzipItem(url("a.zip"), url("out")); }),
                testing::AnyOf("fileReadInvalidFileName", "fileWriteFileExists"))
        << members[0].name;
    EXPECT_TRUE(fs::is_empty(root_ / "outside")) << members[0].name;
    EXPECT_EQ(fs::status(root_ / "outside").permissions(), fs::perms(0755));
  }
  write({fileMember("f", "x")});
  fs::create_symlink("out", root_ / "linked");
  unzipItem(url("a.zip"), url("linked"));
  EXPECT_EQ(readText(root_ / "out/f"), "x") << "the destination itself may be a link";
}

TEST_F(TreeTest, NamesStayInsideTheDestination) {
  struct Case {
    std::string name;
    std::string want;  // where it comes to lie, or nowhere
  };
  const Case cases[] = {
      {"../x", ""},
      {"a/../../x", ""},
      {"../outnot/x", ""},
      {"../out", ""},
      {"x\\..\\y", "x\\..\\y"},
      {std::string("n\0ul", 4), ""},
      {"a/../b", "b"},
      {"/abs", "abs"},
      {"./dot", "dot"},
      {"a//b", "a/b"},
      {"...", "..."},
      {"a/./b", "a/b"},
      {"C:/drive", "C:/drive"},
  };
  for (const auto& row : cases) {
    fs::remove_all(root_ / "out");
    write({fileMember(row.name, "x")});
    const std::string failure = failureOf([&] { unzipItem(url("a.zip"), url("out")); });
    EXPECT_EQ(failure, row.want.empty() ? "fileReadInvalidFileName" : "") << row.name;
    if (!row.want.empty()) {
      EXPECT_EQ(readText(root_ / "out" / row.want), "x") << row.name;
    }
  }
}

TEST_F(TreeTest, EntriesForTheDestinationItselfAreItsAttributes) {
  Member here = directoryMember("./");
  here.externalAttributes = 0040750U << 16;
  write({here, fileMember("./f", "x")});
  unzipItem(url("a.zip"), url("out"));
  struct stat status {};
  ASSERT_EQ(stat((root_ / "out").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0750U);
  for (const char* name : {"", "."}) {
    write({fileMember(name, "x")});
    EXPECT_EQ(failureOf([&] { unzipItem(url("a.zip"), url("out")); }), "fileWriteFileExists");
  }
}

TEST_F(TreeTest, DirectoriesGetTheirDatesAndRightsLast) {
  Member closed = directoryMember("closed/");
  closed.externalAttributes = 0040555U << 16;
  Member inner = directoryMember("closed/inner/");
  inner.externalAttributes = 0040500U << 16;
  write({closed, inner, fileMember("closed/inner/f", "x")});
  unzipItem(url("a.zip"), url("out"));
  const auto archive = Archive::open(url("a.zip"));
  for (const char* name : {"closed/", "closed/inner/"}) {
    struct stat status {};
    ASSERT_EQ(stat((root_ / "out" / name).c_str(), &status), 0);
    const auto want = (*archive)[name]->fileAttributes();
    EXPECT_EQ(status.st_mode & 07777, want.posixPermissions) << name;
    EXPECT_EQ(status.st_mtime, std::chrono::system_clock::to_time_t(want.modificationDate)) << name;
  }
}

TEST_F(TreeTest, ProgressEndsFinishedWhateverTheArchiveHolds) {
  struct Case {
    const char* why;
    std::vector<Member> members;
    std::int64_t total;
  };
  Member locked = fileMember("locked", "x");
  locked.flags |= 1;
  const Case cases[] = {{"file and directory", {fileMember("f", "0123456789"), directoryMember("d/")}, 11},
                        {"nothing", {}, 1},
                        {"empty files only", {fileMember("e", "")}, 1},
                        {"ends at an encrypted one", {fileMember("f", "123"), locked, fileMember("g", "x")}, 3}};
  for (const auto& row : cases) {
    fs::remove_all(root_ / "out");
    write(row.members);
    Progress progress;
    unzipItem(url("a.zip"), url("out"), {.progress = &progress});
    EXPECT_TRUE(progress.isFinished()) << row.why;
    EXPECT_EQ(progress.totalUnitCount(), row.total) << row.why;
    EXPECT_EQ(progress.completedUnitCount(), row.total) << row.why;
  }
  EXPECT_FALSE(fs::exists(root_ / "out/g"));
  fs::remove_all(root_ / "out");
  Progress cancelled;
  cancelled.cancel();
  EXPECT_EQ(failureOf([&] { unzipItem(url("a.zip"), url("out"), {.progress = &cancelled}); }), "cancelledOperation");
  EXPECT_FALSE(cancelled.isFinished());
}

TEST(Containment, ComparesStandardisedTexts) {
  struct Case {
    const char* path;
    const char* directory;
    bool want;
  };
  const Case cases[] = {{"/out/a", "/out", true},         {"/out/a", "/out/", true},
                        {"/outnot/a", "/out", false},     {"/out/../a", "/out", false},
                        {"/out/a/../b", "/out", true},    {"/out/a/..", "/out", true},
                        {"/out", "/out", false},          {"/a", "/", true},
                        {"/out/./a b", "/x/../out", true}};
  for (const auto& row : cases) {
    EXPECT_EQ(isContained(URL::fileURL(row.path), URL::fileURL(row.directory)), row.want) << row.path;
  }
}

TEST_F(TreeTest, AsksTheFileSystemWithoutFollowingLinks) {
  writeText(root_ / "f", "12345");
  fs::create_symlink("f", root_ / "l");
  const timespec times[] = {{0, 0}, {1000, 250000000}};
  utimensat(AT_FDCWD, (root_ / "f").c_str(), times, 0);
  EXPECT_EQ(entryType(url("f")), Entry::EntryType::file);
  EXPECT_EQ(entryType(url("l")), Entry::EntryType::symlink);
  EXPECT_EQ(entryType(url("")), Entry::EntryType::directory);
  EXPECT_EQ(fileSize(url("f")), 5U);
  EXPECT_EQ(fileSize(url("l")), 1U);
  EXPECT_EQ(modificationDate(url("f")), Date(std::chrono::milliseconds(1000250)));
  EXPECT_EQ(failureOf([&] { modificationDate(url("missing")); }), "fileReadNoSuchFile");
  EXPECT_EQ(failureOf([&] { fileSize(*URL::fromString(url("f").absoluteString() + "%00")); }), "fileReadNoSuchFile");
  truncate((root_ / "f").c_str(), 1LL << 32);
  EXPECT_EQ(failureOf([&] { fileSize(url("f")); }), "fileReadTooLarge");
}

}  // namespace
}  // namespace veltrik
