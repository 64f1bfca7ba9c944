// A process that is killed at any of its system calls leaves the old or the new archive when it removes an entry, and
// no half-written file under its final name when it extracts.
//
// Tries some of the calls; scripts/zip-kill-sweep tries them all.

#include <gtest/gtest.h>

#include <iostream>
#include <map>

#include "Tests/Zip/FaultStepper.h"
#include "Tests/Zip/FaultWorkbench.h"
#include "Tests/Zip/HostileArchives.h"
#include "VeltrikAppKit/Archive.h"
#include "VeltrikAppKit/FileManager+ZIP.h"

namespace {

using hostile::Layout;
using hostile::Member;
using veltrik::Archive;
namespace filesystem = std::filesystem;

constexpr long kUsualStride = 23;

std::vector<Member> members(std::size_t count, std::size_t size) {
  std::vector<Member> made;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string name = "file " + std::to_string(i);
    made.push_back(i % 2 == 0 ? hostile::fileMember(name, hostile::randomText(size + i, 9))
                              : hostile::deflatedMember(name, hostile::randomText(size + i, 9)));
  }
  return made;
}

/// Ends with 0 when the work was done and with 1 when the library refused it.
int statusOf(const std::function<void()>& work) {
  try {
    work();
    return 0;
  } catch (const std::exception&) {
    return 1;
  }
}

/// Kills the work at every n-th call and looks at what is left each time.
void sweep(const std::string& name, const std::function<void()>& prepare, const std::function<void()>& work,
           const std::function<void()>& check) {
  if (!fault::canStep()) GTEST_SKIP() << "system calls can't be stepped here";
  const auto body = [&work] { return statusOf(work); };
  prepare();
  const fault::Outcome whole = fault::runStepped({.wholeTree = true}, body);
  ASSERT_TRUE(whole.succeeded());
  check();
  long points = 0;
  for (long call = 1; call <= whole.calls; call += fault::stride(kUsualStride)) {
    SCOPED_TRACE("killed at call " + std::to_string(call));
    prepare();
    const auto outcome = fault::runStepped({.kind = fault::Injection::Kind::kill, .at = call, .wholeTree = true}, body);
    // The number of calls varies a little with the memory the process holds, so the last ones may not come.
    EXPECT_TRUE(!outcome.exitStatus || outcome.succeeded());
    if (!outcome.exitStatus) ++points;
    check();
    if (testing::Test::HasFailure()) break;
  }
  EXPECT_GT(points, 0);
  std::cout << "kill points, " << name << ": " << points << std::endl;
}

struct Removal {
  std::string name;
  std::function<Layout()> layout;
  std::string victim;
  /// Bytes copied between two looks at the progress, or 0 when nobody watches.
  std::uint32_t step = 0;

  friend std::ostream& operator<<(std::ostream& stream, const Removal& removal) { return stream << removal.name; }
};

/// Made where it is needed and not for each test of the program.
std::function<Layout()> plain(std::size_t count, std::size_t size) {
  return [=] { return Layout{members(count, size), {}, {}}; };
}

std::vector<Removal> removals() {
  return {{"first of five", plain(5, 20'000), "file 0"},
          {"middle of five", plain(5, 20'000), "file 2"},
          {"last of five", plain(5, 20'000), "file 4"},
          {"the only one", plain(1, 100), "file 0"},
          {"prefixed and commented",
           [] {
             return Layout{members(5, 20'000), std::string(5000, '#'), "with a comment"};
           },
           "file 1"},
          {"watched in steps", plain(8, 20'000), "file 3", 400},
          {"watched in larger steps", plain(90, 20'000), "file 45", 900},
          {"first of many small", plain(300, 10), "file 0"},
          {"one of big ones", plain(4, 3'000'000), "file 1"},
          {"one of two hundred", plain(200, 17'000), "file 100"}};
}

class KilledRemoval : public testing::TestWithParam<Removal> {};

TEST_P(KilledRemoval, LeavesTheOldOrTheNewArchive) {
  const auto& [name, layout, victim, step] = GetParam();
  const ScratchFolder folder;
  const auto path = folder.path() / "archive.zip";
  const auto url = platform::URL::fileURL(path.native());
  const std::string before(platform::textOf(hostile::assembled(layout())));
  const auto work = [&, victimPath = victim, bufferSize = step] {
    const auto archive = Archive::open(url, {.accessMode = Archive::AccessMode::update});
    platform::Progress progress;
    archive->remove((*archive)[victimPath].value(),
                    {.bufferSize = bufferSize, .progress = bufferSize == 0 ? nullptr : &progress});
  };
  writeText(path, before);
  work();
  const std::string after = readText(path);
  ASSERT_LT(after.size(), before.size());
  sweep(
      "removal, " + name,
      [&] {
        for (const auto& item : filesystem::directory_iterator(folder.path())) filesystem::remove_all(item);
        writeText(path, before);
      },
      work,
      [&] {
        const std::string left = readText(path);
        EXPECT_TRUE(left == before || left == after)
            << "neither the old nor the new archive, " << left.size() << " bytes";
      });
}

struct Extraction {
  std::string name;
  std::function<std::vector<Member>()> members;

  friend std::ostream& operator<<(std::ostream& stream, const Extraction& extraction) {
    return stream << extraction.name;
  }
};

std::vector<Member> tree() {
  std::vector<Member> made;
  for (int folder = 0; folder < 20; ++folder) {
    const std::string name = "folder " + std::to_string(folder) + "/";
    made.push_back(hostile::directoryMember(name));
    made.push_back(hostile::linkMember(name + "link", "file 0"));
    for (int file = 0; file < 12; ++file) {
      made.push_back(hostile::deflatedMember(name + "file " + std::to_string(file), hostile::randomText(1000, 9)));
    }
  }
  return made;
}

std::vector<Member> stored() {
  std::vector<Member> made;
  for (int file = 0; file < 120; ++file) {
    made.push_back(hostile::fileMember("deep/er/file " + std::to_string(file), hostile::randomText(20'000, 9)));
  }
  return made;
}

std::vector<Extraction> extractions() {
  return {{"one small", [] { return members(1, 5); }},
          {"many stored", stored},
          {"stored and deflated of several blocks", [] { return members(6, 100'000); }},
          {"empty ones", [] { return members(3, 0); }},
          {"a link", [] { return std::vector{hostile::linkMember("link", "somewhere/else")}; }},
          {"a tree", tree}};
}

class KilledExtraction : public testing::TestWithParam<Extraction> {};

TEST_P(KilledExtraction, LeavesNoHalfFile) {
  const auto& [name, members] = GetParam();
  const ScratchFolder folder;
  const auto archive = folder.path() / "archive.zip";
  const auto out = folder.path() / "out";
  const std::string bytes(platform::textOf(hostile::assembled(members())));
  writeText(archive, bytes);
  std::map<filesystem::path, std::string> complete;
  const auto work = [&] {
    veltrik::unzipItem(platform::URL::fileURL(archive.native()), platform::URL::directoryURL(out.native()));
  };
  work();
  for (const auto& item : filesystem::recursive_directory_iterator(out)) {
    if (item.is_symlink()) {
      complete[item.path()] = filesystem::read_symlink(item.path());
    } else if (item.is_regular_file()) {
      complete[item.path()] = readText(item.path());
    }
  }
  sweep(
      "extraction, " + name, [&] { filesystem::remove_all(out); }, work,
      [&] {
        EXPECT_EQ(readText(archive), bytes);
        for (const auto& [path, content] : complete) {
          if (!filesystem::exists(filesystem::symlink_status(path))) continue;
          const bool isLink = filesystem::is_symlink(path);
          EXPECT_TRUE((isLink ? filesystem::read_symlink(path).native() : readText(path)) == content) << path;
        }
      });
}

INSTANTIATE_TEST_SUITE_P(Archives, KilledRemoval, testing::ValuesIn(removals()), fault::nameOf<Removal>);
INSTANTIATE_TEST_SUITE_P(Archives, KilledExtraction, testing::ValuesIn(extractions()), fault::nameOf<Extraction>);

}  // namespace
