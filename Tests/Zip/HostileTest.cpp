// Archives that are damaged or mean harm: no crash, no file outside the destination, and neither memory nor time that
// an archive's claims decide.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>

#include "Tests/ScratchFolder.h"
#include "Tests/Zip/FaultAllocation.h"
#include "Tests/Zip/FaultStepper.h"
#include "Tests/Zip/HostileArchives.h"
#include "Tests/Zip/HostileExercises.h"

namespace {

using hostile::Bytes;
using hostile::Specimen;
namespace filesystem = std::filesystem;

constexpr std::size_t kMostMemory = 32u << 20;
/// Of processor time, so that a busy machine does not matter; sanitizers slow everything down.
constexpr double kMostSeconds = fault::kIsSanitized ? 20 : 2;
constexpr std::uint32_t kMutations = 20'000;
constexpr std::uint32_t kShards = 20;
/// Unpacking to disk costs more than all the rest, so only some of the mutated archives are.
constexpr std::uint32_t kUnpackedEvery = 8;

/// Runs `work` and holds it to the limits of memory and time.
template <class Work>
void expectBounded(const Work& work) {
  const fault::AllocationMeter meter;
  const std::clock_t start = std::clock();
  EXPECT_NO_THROW(work());
  EXPECT_LE(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, kMostSeconds);
  EXPECT_LE(meter.peak(), kMostMemory);
}

/// The place of extraction with neighbours that must stay as they are, and links in it that lead to them.
class Sandbox {
 public:
  Sandbox() {
    filesystem::create_directory(outside());
    writeText(outside() / "victim", "untouched");
  }

  filesystem::path outside() const { return folder_.path() / "outnot"; }

  void unpack(const Bytes& bytes) {
    const auto out = folder_.path() / "out";
    filesystem::create_directory(out);
    filesystem::create_directory_symlink("../outnot", out / "standing");
    filesystem::create_symlink("../outnot/victim", out / "standing file");
    filesystem::create_symlink("../nowhere", out / "standing nowhere");
    const auto archive = folder_.path() / "archive.zip";
    writeText(archive, platform::textOf(bytes));
    expectBounded([&] { hostile::unpack(archive, out); });
    expectNoSetIDBits(out);
    filesystem::remove_all(out);
    EXPECT_EQ(names(folder_.path()), (std::vector<std::string>{"archive.zip", "outnot"}));
    EXPECT_EQ(names(outside()), std::vector<std::string>{"victim"});
    EXPECT_EQ(readText(outside() / "victim"), "untouched");
  }

 private:
  static std::vector<std::string> names(const filesystem::path& folder) {
    std::vector<std::string> found;
    for (const auto& item : filesystem::directory_iterator(folder)) found.push_back(item.path().filename());
    std::sort(found.begin(), found.end());
    return found;
  }

  static void expectNoSetIDBits(const filesystem::path& folder) {
    for (const auto& item : filesystem::recursive_directory_iterator(folder)) {
      struct stat status {};
      ::lstat(item.path().c_str(), &status);
      EXPECT_EQ(status.st_mode & (S_ISUID | S_ISGID), 0u) << item.path();
    }
  }

  ScratchFolder folder_;
};

void exercise(const Bytes& bytes) {
  const auto view = platform::DataView(bytes);
  hostile::open(view);
  hostile::iterate(view);
  hostile::extract(view);
  hostile::add(view);
  hostile::remove(view);
}

void expectHarmless(const std::vector<Specimen>& specimens, Sandbox& sandbox) {
  for (const auto& [name, bytes] : specimens) {
    SCOPED_TRACE(name);
    expectBounded([&] { exercise(bytes); });
    sandbox.unpack(bytes);
  }
}

TEST(HostileArchive, CraftedOnesAreHarmless) {
  Sandbox sandbox;
  const std::vector<std::vector<Specimen>> kinds{hostile::archivesWithExtremeFields(), hostile::truncatedArchives(),
                                                 hostile::archivesThatMeanHarm(sandbox.outside())};
  std::size_t count = 0;
  for (const auto& kind : kinds) {
    count += kind.size();
    expectHarmless(kind, sandbox);
  }
  EXPECT_GE(count, 500u);
}

TEST(HostileArchive, SoundOnesAreWhole) {
  Sandbox sandbox;
  expectHarmless(hostile::soundArchives(), sandbox);
}

TEST(HostileArchive, EqualNamesDoNotSlowLookUpsDown) {
  const Bytes bytes = hostile::archiveOfEqualNames(65'535);
  expectBounded([&] { hostile::iterate(bytes); });
}

class MutatedArchive : public testing::TestWithParam<std::uint32_t> {};

TEST_P(MutatedArchive, IsHarmless) {
  Sandbox sandbox;
  const auto sound = hostile::soundArchives();
  for (std::uint32_t number = GetParam(); number < kMutations; number += kShards) {
    SCOPED_TRACE(number);
    const Bytes bytes = hostile::mutatedArchive(sound, number);
    expectBounded([&] { exercise(bytes); });
    if (number / kShards % kUnpackedEvery == 0) sandbox.unpack(bytes);
  }
}

INSTANTIATE_TEST_SUITE_P(Shards, MutatedArchive, testing::Range(0u, kShards));

}  // namespace
