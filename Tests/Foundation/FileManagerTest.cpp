#include "Platform/Foundation/FileManager.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <set>

#include "Platform/Foundation/CocoaError.h"
#include "Tests/ScratchFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using Code = CocoaError::Code;

class FileManagerTest : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return (root_ / name).string(); }
  URL url(const std::string& name) const { return URL::fileURL(path(name)); }
  void write(const std::string& name, std::string_view text) const {
    files_.writeWithoutOverwriting(bytesOf(text), url(name));
  }
  std::string read(const std::string& name) const { return std::string(textOf(files_.contents(url(name)))); }

  /// The code that `work` throws; nothing when it throws none.
  template <class Work>
  static std::optional<Code> codeOf(const Work& work) {
    try {
      work();
      return std::nullopt;
    } catch (const CocoaError& error) {
      EXPECT_FALSE(error.path().empty());
      EXPECT_NE(std::string(error.what()).find(error.name()), std::string::npos);
      return error.code();
    }
  }

  const ScratchFolder folder_;
  const fs::path root_ = folder_.path();
  FileManager files_;
};

TEST_F(FileManagerTest, ALinkThatLeadsNowhereIsAnItem) {
  files_.createSymbolicLink(path("link"), "nowhere");
  EXPECT_TRUE(files_.isReachableItem(url("link")));
  EXPECT_FALSE(files_.fileExists(path("link")));
  EXPECT_FALSE(files_.isReachableItem(url("other")));
  EXPECT_FALSE(files_.isReachableItem(*URL::fromString("https://example.org/")));
  EXPECT_EQ(files_.destinationOfSymbolicLink(path("link")), "nowhere");
}

TEST_F(FileManagerTest, ListsDeepSortedAndFollowsNoLink) {
  files_.createDirectory(url("d/b/c"), true);
  write("d/b/z", "");
  write("d/a", "");
  files_.createSymbolicLink(path("d/loop"), ".");
  EXPECT_EQ(files_.subpathsOfDirectory(path("d")), (std::vector<std::string>{"a", "b", "b/c", "b/z", "loop"}));
  const auto items = files_.contentsOfDirectory(url("d"));
  ASSERT_EQ(items.size(), 3U);
  EXPECT_FALSE(items[0].hasDirectoryPath());
  EXPECT_TRUE(items[1].hasDirectoryPath());
  EXPECT_FALSE(items[2].hasDirectoryPath());
}

TEST_F(FileManagerTest, WhatFailsSaysWhy) {
  write("file", "x");
  const std::string longName(300, 'n');
  struct Case {
    const char* name;
    std::function<void()> work;
    Code want;
  };
  const Case cases[] = {
      {"list nothing", [&] { files_.subpathsOfDirectory(path("no")); }, Code::fileReadNoSuchFile},
      {"list a file", [&] { files_.contentsOfDirectory(url("file")); }, Code::fileReadNoSuchFile},
      {"read nothing", [&] { files_.contents(url("no")); }, Code::fileReadNoSuchFile},
      {"read a directory", [&] { files_.contents(url("")); }, Code::fileReadUnknown},
      {"read a long name", [&] { files_.contents(url(longName)); }, Code::fileReadInvalidFileName},
      {"read a NUL", [&] { files_.contents(*URL::fromString("file:///tmp%00x")); }, Code::fileReadInvalidFileName},
      {"remove a NUL", [&] { files_.removeItem(*URL::fromString("file:///tmp%00x")); }, Code::fileReadInvalidFileName},
      {"read a file as a link", [&] { files_.destinationOfSymbolicLink(path("file")); }, Code::fileReadUnknown},
      {"write over", [&] { files_.writeWithoutOverwriting({}, url("file")); }, Code::fileWriteFileExists},
      {"write nowhere", [&] { files_.writeWithoutOverwriting({}, url("no/x")); }, Code::fileNoSuchFile},
      {"write atomically nowhere", [&] { files_.writeAtomically({}, url("no/x")); }, Code::fileNoSuchFile},
      {"write atomically onto a directory", [&] { files_.writeAtomically({}, url("")); }, Code::fileWriteUnknown},
      {"make over a file", [&] { files_.createDirectory(url("file"), true); }, Code::fileWriteFileExists},
      {"make below a file", [&] { files_.createDirectory(url("file/x"), false); }, Code::fileNoSuchFile},
      {"make without parents", [&] { files_.createDirectory(url("no/x"), false); }, Code::fileNoSuchFile},
      {"link over", [&] { files_.createSymbolicLink(path("file"), "x"); }, Code::fileWriteFileExists},
      {"copy nothing", [&] { files_.copyItem(url("no"), url("x")); }, Code::fileReadNoSuchFile},
      {"copy over", [&] { files_.copyItem(url("file"), url("file")); }, Code::fileWriteFileExists},
      {"move nothing", [&] { files_.moveItem(url("no"), url("x")); }, Code::fileReadNoSuchFile},
      {"move over", [&] { files_.moveItem(url("file"), url("file")); }, Code::fileWriteFileExists},
      {"move nowhere", [&] { files_.moveItem(url("file"), url("no/x")); }, Code::fileNoSuchFile},
      {"remove nothing", [&] { files_.removeItem(url("no")); }, Code::fileNoSuchFile},
      {"replace with nothing", [&] { files_.replaceItem(url("file"), url("no")); }, Code::fileNoSuchFile},
      {"attributes of nothing", [&] { files_.setAttributes({}, path("no")); }, Code::fileReadNoSuchFile},
  };
  for (const auto& row : cases) EXPECT_EQ(codeOf(row.work), row.want) << row.name;
  EXPECT_EQ(read("file"), "x");
  EXPECT_EQ(std::distance(fs::directory_iterator(root_), {}), 1) << "nothing is left behind";
}

TEST_F(FileManagerTest, MakesParentsOnceAndAgain) {
  files_.createDirectory(url("a/b/c"), true);
  files_.createDirectory(url("a/b/c"), true);
  files_.createParentDirectories(url("a/d/file"));
  EXPECT_TRUE(files_.isDirectory(url("a/b/c")));
  EXPECT_TRUE(files_.isDirectory(url("a/d")));
  EXPECT_FALSE(files_.isReachableItem(url("a/d/file")));
}

TEST_F(FileManagerTest, WritesWholeFiles) {
  const std::string large(200000, 'x');
  files_.writeAtomically(bytesOf("old"), url("f"));
  files_.writeAtomically(bytesOf(large), url("f"));
  EXPECT_EQ(read("f"), large);
  EXPECT_EQ(std::distance(fs::directory_iterator(root_), {}), 1);
}

TEST_F(FileManagerTest, CopiesATreeAsItIs) {
  files_.createDirectory(url("d/sub"), true);
  write("d/sub/run", "#!/bin/sh\n");
  chmod(path("d/sub/run").c_str(), 0750);
  files_.createSymbolicLink(path("d/link"), "sub/run");
  files_.setAttributes({.posixPermissions = 0555, .modificationDate = std::chrono::system_clock::from_time_t(1000)},
                       path("d/sub"));
  files_.copyItem(url("d"), url("copy"));
  files_.linkItem(url("d"), url("linked"));
  for (const std::string name : {"copy", "linked"}) {
    struct stat sub {};
    struct stat run {};
    ASSERT_EQ(stat(path(name + "/sub").c_str(), &sub), 0);
    ASSERT_EQ(stat(path(name + "/sub/run").c_str(), &run), 0);
    EXPECT_EQ(sub.st_mode & 07777, 0555U);
    EXPECT_EQ(sub.st_mtime, 1000);
    EXPECT_EQ(run.st_mode & 07777, 0750U);
    EXPECT_EQ(read(name + "/sub/run"), "#!/bin/sh\n");
    EXPECT_EQ(files_.destinationOfSymbolicLink(path(name + "/link")), "sub/run");
  }
  EXPECT_FALSE(files_.isSameItem(url("copy/sub/run"), url("d/sub/run")));
  EXPECT_TRUE(files_.isSameItem(url("linked/sub/run"), url("d/sub/run")));
}

TEST_F(FileManagerTest, LinkingCopiesWhereTheFileSystemHasNoSecondNames) {
  const auto elsewhere = URL::fileURL("/var/tmp/" + root_.filename().string());
  write("f", "bytes");
  files_.linkItem(url("f"), elsewhere);
  EXPECT_EQ(textOf(files_.contents(elsewhere)), "bytes");
  files_.removeItem(elsewhere);
}

TEST_F(FileManagerTest, HalfACopyIsNoCopy) {
  files_.createDirectory(url("d"), false);
  write("d/a", "a");
  ASSERT_EQ(mkfifo(path("d/pipe").c_str(), 0600), 0);
  EXPECT_EQ(codeOf([&] { files_.copyItem(url("d"), url("copy")); }), Code::fileReadUnknown);
  EXPECT_FALSE(files_.isReachableItem(url("copy")));
}

TEST_F(FileManagerTest, MovesRemovesAndReplaces) {
  files_.createDirectory(url("d/e"), true);
  write("d/e/f", "one");
  files_.moveItem(url("d"), url("moved"));
  EXPECT_EQ(read("moved/e/f"), "one");
  write("new", "two");
  files_.replaceItem(url("moved/e/f"), url("new"));
  EXPECT_EQ(read("moved/e/f"), "two");
  EXPECT_FALSE(files_.isReachableItem(url("new")));
  files_.createSymbolicLink(path("moved/out"), "/");
  files_.removeItem(url("moved"));
  EXPECT_EQ(std::distance(fs::directory_iterator(root_), {}), 0);
  EXPECT_TRUE(fs::exists("/tmp"));
}

TEST_F(FileManagerTest, BetweenFileSystemsItCopies) {
  const fs::path temporary = fs::temp_directory_path();
  struct stat here {};
  struct stat there {};
  if (stat(temporary.c_str(), &there) != 0 || stat(root_.c_str(), &here) != 0 || here.st_dev == there.st_dev)
    GTEST_SKIP() << "only one file system to write to";
  const URL elsewhere = URL::fileURL((temporary / globallyUniqueString()).native());
  write("f", "text");
  files_.moveItem(url("f"), elsewhere);
  EXPECT_FALSE(files_.isReachableItem(url("f")));
  write("old", "old");
  files_.replaceItem(url("old"), elsewhere);
  EXPECT_EQ(read("old"), "text");
  EXPECT_FALSE(files_.isReachableItem(elsewhere));
  EXPECT_EQ(std::distance(fs::directory_iterator(root_), {}), 1);
}

TEST_F(FileManagerTest, TheReplacementDirectoryIsBesideTheItem) {
  const URL folder = files_.itemReplacementDirectory(url("archive.zip"));
  EXPECT_EQ(folder.deletingLastPathComponent().path(), root_.string());
  EXPECT_TRUE(files_.isDirectory(folder));
  const FileManager elsewhere({.home = "/", .caches = "/", .temporary = root_.string()});
  EXPECT_EQ(elsewhere.itemReplacementDirectory(url("no/archive.zip")).deletingLastPathComponent().path(),
            root_.string());
}

TEST_F(FileManagerTest, AttributesOfALinkStayItsOwn) {
  write("target", "");
  chmod(path("target").c_str(), 0600);
  files_.createSymbolicLink(path("link"), "target");
  files_.setAttributes({.posixPermissions = 0777, .modificationDate = std::chrono::system_clock::from_time_t(5)},
                       path("link"));
  struct stat target {};
  struct stat link {};
  ASSERT_EQ(stat(path("target").c_str(), &target), 0);
  ASSERT_EQ(lstat(path("link").c_str(), &link), 0);
  EXPECT_EQ(target.st_mode & 07777, 0600U);
  EXPECT_NE(target.st_mtime, 5);
  EXPECT_EQ(link.st_mtime, 5);
}

TEST(UserFolders, FollowTheEnvironment) {
  setenv("XDG_CACHE_HOME", "/somewhere/cache", 1);
  setenv("HOME", "/home/someone", 1);
  const UserFolders folders = UserFolders::fromEnvironment();
  EXPECT_EQ(folders.caches, "/somewhere/cache");
}

TEST(CocoaError, NamesWhatIsKnown) {
  CocoaError error(Code::fileWriteFileExists, "/tmp/a", "File exists");
  EXPECT_STREQ(error.what(), "fileWriteFileExists: path '/tmp/a': File exists");
  error.setEntry("a");
  error.setEntry("b");
  EXPECT_STREQ(error.what(), "fileWriteFileExists: entry 'a', path '/tmp/a': File exists");
  EXPECT_STREQ(CocoaError(Code::fileNoSuchFile).what(), "fileNoSuchFile");
}

TEST(CocoaError, MapsTheSystemsReasons) {
  struct Case {
    int number;
    Code reading, writing;
  };
  const Case cases[] = {
      {ENOENT, Code::fileReadNoSuchFile, Code::fileNoSuchFile},
      {EACCES, Code::fileReadNoPermission, Code::fileWriteNoPermission},
      {ENAMETOOLONG, Code::fileReadInvalidFileName, Code::fileWriteInvalidFileName},
      {EFBIG, Code::fileReadTooLarge, Code::fileWriteUnknown},
      {EEXIST, Code::fileReadUnknown, Code::fileWriteFileExists},
      {ENOSPC, Code::fileReadUnknown, Code::fileWriteOutOfSpace},
      {EROFS, Code::fileReadUnknown, Code::fileWriteVolumeReadOnly},
  };
  std::set<std::string_view> names;
  for (const auto& row : cases) {
    EXPECT_EQ(CocoaError::reading(row.number, "p").code(), row.reading) << row.number;
    EXPECT_EQ(CocoaError::writing(row.number, "p").code(), row.writing) << row.number;
    names.insert(CocoaError::reading(row.number, "p").name());
    names.insert(CocoaError::writing(row.number, "p").name());
  }
  EXPECT_EQ(names.size(), 12U) << "every case has a name of its own";
}

}  // namespace
}  // namespace platform
