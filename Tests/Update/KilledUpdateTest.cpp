// The whole tree of an update's processes is killed at each of its system calls: a complete application stands in its
// place, and the next run leaves nothing over.

#include <iostream>

#include "Tests/Update/StoppedUpdateFixture.h"

namespace veltrik {
namespace {

namespace filesystem = std::filesystem;
using fault::Injection;

/// Every how many-th call is tried unless all are wanted.
constexpr long kUsualStride = 53;

class KilledUpdate : public StoppedUpdate {
 protected:
  /// Kills at call after call, from a beginning that `begin` makes each time, and has an undisturbed run follow.
  /// `endsWith` is what stands in the installed place after that.
  void sweep(const char* name, const std::function<void()>& begin, const std::map<std::string, std::string>& endsWith) {
    long points = 0;
    bool reached = true;
    for (long call = 1; reached; call += fault::stride(kUsualStride)) {
      SCOPED_TRACE(std::string(name) + ", killed at system call " + std::to_string(call));
      begin();
      reached = run({.kind = Injection::Kind::kill, .at = call}).hitCall.has_value();
      ASSERT_TRUE(standsComplete()) << log.text();
      if (!reached) break;
      ++points;
      runHere();
      ASSERT_TRUE(stands(endsWith)) << log.text();
      ASSERT_EQ(namesIn(bench.root / "install"), std::vector<std::string>{"Mirelo.app"}) << log.text();
    }
    EXPECT_GT(points, 0);
    std::cout << "kill points, " << name << ": " << points << std::endl;
  }
};

TEST_F(KilledUpdate, ThatWouldHaveSucceeded) {
  sweep(
      "a successful update", [this] { reset(); }, updated);
  EXPECT_TRUE(nothingIsLeft());
}

TEST_F(KilledUpdate, ThatFollowsAKilledOne) {
  const auto hidden = bench.root / "install/.Mirelo.app.update";
  const auto beginning = [&] {
    reset();
    // The new version stands, the old one waits to be removed, and so does its copy, one half of which is gone.
    filesystem::create_directories(hidden);
    filesystem::rename(bench.installed(), hidden / "incoming");
    UpdateBench::makeVersion(bench.installed(), "2.0");
    UpdateBench::makeVersion(bench.backup(), "1.0");
    writeText(hidden / "discarded/Contents/Resources/text", "version 1.0");
    UpdateBench::makeVersion(bench.downloads() / "Mirelo.app", "2.0");
    filesystem::remove(bench.downloads() / "Mirelo.app/Contents/Info.plist");
  };
  sweep("an update after a killed one", beginning, updated);
}

TEST_F(KilledUpdate, ThatIsRolledBack) {
  const SmallDisk disk(bench.root / "install", "size=256k");
  if (!disk.isMounted()) GTEST_SKIP() << "nothing can be mounted here";
  writeText(bench.root / "packed/Mirelo.app/Contents/Resources/large", std::string(400'000, 'x'));
  bench.pack(bench.root / "update.zip");
  reset();
  runHere();
  ASSERT_TRUE(logged("rollback> remove backup file")) << log.text();
  sweep(
      "an update that is rolled back", [this] { reset(); }, old);
}

}  // namespace
}  // namespace veltrik
