#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <iomanip>
#include <sstream>

#include "Platform/Foundation/FileDescriptor.h"
#include "Tests/Zip/ArchiveFixture.h"

namespace veltrik {
namespace {

using hostile::assembled;
using hostile::fileMember;
using hostile::Layout;
using hostile::Member;
using platform::Data;

class RemoveTest : public ChangingFixture {
 protected:
  std::string refusal(const Entry& entry, const RemoveOptions& options = {}) {
    const std::string before = bytes();
    const std::string failure = failureOf([&] { archive_->remove(entry, options); });
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(root_), {}), 1) << "nothing is left over";
    return failure;
  }
};

INSTANTIATE_TEST_SUITE_P(Places, RemoveTest, testing::Bool(), placeName);

TEST_P(RemoveTest, AnyEntryGoesAndTheOthersStay) {
  Member streamed = fileMember("streamed", "s");
  streamed.flags |= 8;
  streamed.localExtra = "local";
  for (const std::uint32_t word : {streamed.crc, 1U, 1U})
    for (int at = 0; at < 4; ++at) streamed.descriptor += static_cast<char>(word >> (8 * at));
  Member unsignedOne = streamed;
  unsignedOne.name = "unsigned";
  streamed.descriptor = "PK\x07\x08" + streamed.descriptor;
  Member extra = fileMember("extra", "x");
  extra.localExtra = "local";
  extra.centralExtra = "central";
  extra.comment = "comment";
  const Layout layout = {
      .members = {fileMember("a", "1"), streamed, hostile::deflatedMember("z", std::string(9000, 'z')), unsignedOne,
                  hostile::linkMember("l", "a"), extra, hostile::directoryMember("d/")},
      .prefix = "#!prefix\n",
      .comment = "the archive's own"};
  for (std::size_t at = 0; at < layout.members.size(); ++at) {
    openOn(assembled(layout));
    std::vector<std::string> want;
    for (const Member& member : layout.members) want.push_back(member.name);
    archive_->remove(*(*archive_)[want[at]]);
    want.erase(want.begin() + static_cast<std::ptrdiff_t>(at));
    EXPECT_EQ(soundPaths(), want);
    Layout rest = layout;
    rest.members.erase(rest.members.begin() + static_cast<std::ptrdiff_t>(at));
    EXPECT_EQ(bytes(), platform::textOf(assembled(rest))) << "removed " << at;
  }
}

TEST_P(RemoveTest, TheArchiveGoesOnBeingUsed) {
  openOn(assembled({fileMember("a", "1"), fileMember("b", "2"), fileMember("c", "3")}));
  archive_->addEntry("d", {.uncompressedSize = 3}, from("444"));
  archive_->remove(*(*archive_)["a"]);
  archive_->addEntry("e", {.uncompressedSize = 3}, from("555"));
  archive_->remove(*(*archive_)["c"]);
  EXPECT_EQ(soundPaths(), (std::vector<std::string>{"b", "d", "e"}));
  EXPECT_FALSE((*archive_)["a"]);
  EXPECT_TRUE((*archive_)["e"]);
  for (const char* path : {"d", "e", "b"}) archive_->remove(*(*archive_)[path]);
  EXPECT_EQ(bytes(), platform::textOf(Archive::EndOfCentralDirectoryRecord().data()));
  EXPECT_EQ(archive_->begin(), archive_->end());
}

TEST_P(RemoveTest, RecordsInAnyOrderKeepTheirData) {
  // The directory lists the records from back to front, with a gap before each.
  Data bytes = assembled({fileMember("a", "first"), fileMember("b", "second"), fileMember("c", "third")});
  const std::size_t structure = 46 + 1;
  const std::size_t start = bytes.size() - 22 - 3 * structure;
  std::rotate(bytes.begin() + static_cast<std::ptrdiff_t>(start),
              bytes.begin() + static_cast<std::ptrdiff_t>(start + 2 * structure), bytes.end() - 22);
  openOn(bytes);
  archive_->remove(*(*archive_)["a"]);
  EXPECT_EQ(soundPaths(), (std::vector<std::string>{"c", "b"}));
}

TEST_P(RemoveTest, RefusesWhatWouldLoseSomething) {
  Member encrypted = fileMember("locked", "?");
  encrypted.flags |= 1;
  openOn(assembled({fileMember("a", "1"), encrypted, fileMember("b", "2")}));
  EXPECT_EQ(refusal(*archive_->begin()), "unwritableArchive");

  openOn(assembled({fileMember("a", "1"), fileMember("b", "2")}));
  const Entry gone = *(*archive_)["a"];
  archive_->remove(gone);
  EXPECT_EQ(refusal(gone), "invalidEntryPath");

  openOn(hostile::archiveOfEqualNames(3));
  EXPECT_EQ(refusal(*archive_->begin()), "unwritableArchive") << "overlapping";
  Member liar = fileMember("liar", "1");
  liar.uncompressedSize = 1 << 30;
  openOn(assembled({liar, fileMember("b", "2")}));
  EXPECT_EQ(refusal(*(*archive_)["b"]), "unwritableArchive") << "beyond the directory";
}

TEST_P(RemoveTest, ProgressCountsWhatStaysAndCancels) {
  const std::string text(100000, 't');
  openOn(assembled({fileMember("a", text), fileMember("b", text), fileMember("c", "c")}));
  platform::Progress cancelled;
  cancelled.cancel();
  EXPECT_EQ(refusal(*(*archive_)["b"], {.progress = &cancelled}), "cancelledOperation");
  platform::Progress progress;
  const std::int64_t want = archive_->totalUnitCountForRemoving(*(*archive_)["b"]);
  archive_->remove(*(*archive_)["b"], {.bufferSize = 1000, .progress = &progress});
  EXPECT_EQ(progress.totalUnitCount(), want);
  EXPECT_EQ(progress.completedUnitCount(), want);
  EXPECT_EQ(want, 2 * (30 + 1) + 100000 + 1);
}

TEST_F(ArchiveFixture, RemovingKeepsTheFilesRightsAndGoesThroughLinks) {
  const auto path = root_ / "a.zip";
  writeText(path, platform::textOf(assembled({fileMember("a", "1"), fileMember("b", "2")})));
  chmod(path.c_str(), 0640);
  std::filesystem::create_symlink("a.zip", root_ / "link.zip");
  const auto archive = Archive::open(url("link.zip"), {.accessMode = ArchiveAccessMode::update});
  archive->remove(*archive->begin());
  struct stat status {};
  ASSERT_EQ(lstat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode, 0100640U);
  EXPECT_TRUE(std::filesystem::is_symlink(root_ / "link.zip"));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(root_), {}), 2);
  EXPECT_EQ(Archive::open(url("a.zip"))->begin()->path(), "b");
  std::filesystem::remove(path);
  EXPECT_ANY_THROW(archive->remove(*archive->begin())) << "a vanished archive";
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(root_), {}), 1);
}

/// A file that replaces the archive has this name where there are no files without names, and for a moment before it
/// takes the archive's.
std::string leftoverName(const std::string& archive) {
  std::ostringstream name;
  name << ".replacement-" << std::hex << std::uppercase << std::setw(8) << std::setfill('0')
       << hostile::checksum(archive);
  return name.str();
}

TEST_F(ArchiveFixture, RemovingClearsAwayWhatAKilledRemovalLeftAndNothingElse) {
  struct Case {
    const char* why;
    bool isLocked;
    bool stays;
  };
  const auto path = root_ / "a.zip";
  const auto left = root_ / leftoverName("a.zip");
  for (const Case& row : {Case{"left by a killed process", false, false}, Case{"in use by a living one", true, true}}) {
    writeText(path, platform::textOf(assembled({fileMember("a", "1"), fileMember("b", "2")})));
    writeText(left, "half an archive");
    const platform::FileDescriptor held(open(left.c_str(), O_RDONLY | O_CLOEXEC));
    if (row.isLocked) {
      ASSERT_EQ(flock(held.get(), LOCK_EX | LOCK_NB), 0);
    }
    const auto archive = Archive::open(url("a.zip"), {.accessMode = ArchiveAccessMode::update});
    archive->remove(*archive->begin());
    EXPECT_EQ(Archive::open(url("a.zip"))->begin()->path(), "b") << row.why;
    EXPECT_EQ(std::filesystem::exists(left), row.stays) << row.why;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(root_), {}), row.stays ? 2 : 1) << row.why;
  }
  std::filesystem::remove(left);
  std::filesystem::create_directory(left);
  writeText(path, platform::textOf(assembled({fileMember("a", "1"), fileMember("b", "2")})));
  const auto archive = Archive::open(url("a.zip"), {.accessMode = ArchiveAccessMode::update});
  archive->remove(*archive->begin());
  EXPECT_EQ(Archive::open(url("a.zip"))->begin()->path(), "b") << "beside a folder of that name";
  EXPECT_TRUE(std::filesystem::is_directory(left));
}

}  // namespace
}  // namespace veltrik
