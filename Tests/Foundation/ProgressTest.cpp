#include "Platform/Foundation/Progress.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace platform {
namespace {

TEST(Progress, IsFinishedOnceAKnownTotalIsReached) {
  struct Case {
    const char* name;
    std::int64_t total, completed;
    bool finished;
    double fraction;
  };
  const Case cases[] = {{"fresh", 0, 0, false, 0},    {"begun", 10, 5, false, 0.5},
                        {"done", 10, 10, true, 1},    {"beyond the total", 10, 12, true, 1},
                        {"no total", 0, 3, false, 0}, {"unknown total", -1, 0, false, 0}};
  for (const auto& row : cases) {
    Progress progress(row.total);
    progress.setCompletedUnitCount(row.completed);
    EXPECT_EQ(progress.isFinished(), row.finished) << row.name;
    EXPECT_DOUBLE_EQ(progress.fractionCompleted(), row.fraction) << row.name;
  }
}

TEST(Progress, AFinishedChildCompletesItsPendingUnitsOnce) {
  Progress whole(100);
  const auto first = std::make_shared<Progress>(10);
  const auto second = std::make_shared<Progress>(4);
  whole.addChild(first, 60);
  whole.addChild(second, 40);
  first->addCompletedUnitCount(5);
  EXPECT_EQ(whole.completedUnitCount(), 0);
  EXPECT_DOUBLE_EQ(whole.fractionCompleted(), 0.3);
  first->addCompletedUnitCount(5);
  first->setCompletedUnitCount(10);
  EXPECT_EQ(whole.completedUnitCount(), 60);
  second->setCompletedUnitCount(4);
  EXPECT_TRUE(whole.isFinished());
}

TEST(Progress, FinishingReachesUpThroughAllGenerations) {
  Progress whole(1);
  auto child = std::make_shared<Progress>(1);
  auto grandchild = std::make_shared<Progress>(1);
  whole.addChild(child, 1);
  child->addChild(grandchild, 1);
  child.reset();  // The whole holds the last reference now.
  grandchild->setCompletedUnitCount(1);
  EXPECT_TRUE(whole.isFinished());
}

TEST(Progress, AChildThatIsFinishedAlreadyCountsAtOnce) {
  Progress whole(3);
  const auto child = std::make_shared<Progress>(1);
  child->setCompletedUnitCount(1);
  whole.addChild(child, 3);
  EXPECT_TRUE(whole.isFinished());
  EXPECT_THROW(Progress(1).addChild(child, 1), std::logic_error);
  const auto orphan = std::make_shared<Progress>(1);
  { Progress(1).addChild(orphan, 1); }
  orphan->setCompletedUnitCount(1);
  EXPECT_TRUE(orphan->isFinished());
}

TEST(Progress, ATotalThatIsSetLateMayFinishIt) {
  Progress whole(1);
  const auto child = std::make_shared<Progress>();
  whole.addChild(child, 1);
  child->setCompletedUnitCount(7);
  EXPECT_FALSE(whole.isFinished());
  child->setTotalUnitCount(7);
  EXPECT_TRUE(whole.isFinished());
}

TEST(Progress, CancellingReachesChildrenOfThenAndLater) {
  Progress whole(2);
  const auto early = std::make_shared<Progress>(1);
  const auto late = std::make_shared<Progress>(1);
  whole.addChild(early, 1);
  int calls = 0;
  whole.setCancellationHandler([&] { ++calls; });
  whole.cancel();
  whole.cancel();
  whole.addChild(late, 1);
  EXPECT_TRUE(early->isCancelled());
  EXPECT_TRUE(late->isCancelled());
  EXPECT_EQ(calls, 1);
  whole.setCancellationHandler([&] { ++calls; });
  EXPECT_EQ(calls, 2);
}

TEST(Progress, CountsAreExactFromManyThreads) {
  constexpr int kChildren = 200;
  Progress whole(kChildren);
  std::vector<std::shared_ptr<Progress>> children;
  for (int at = 0; at < kChildren; ++at) {
    children.push_back(std::make_shared<Progress>(10));
    whole.addChild(children.back(), 1);
  }
  std::vector<std::thread> workers;
  for (int worker = 0; worker < 4; ++worker) {
    workers.emplace_back([&, worker] {
      for (int at = worker; at < kChildren; at += 4) {
        for (int unit = 0; unit < 10; ++unit) children[static_cast<std::size_t>(at)]->addCompletedUnitCount(1);
        (void)whole.fractionCompleted();
      }
    });
  }
  for (auto& worker : workers) worker.join();
  EXPECT_EQ(whole.completedUnitCount(), kChildren);
}

}  // namespace
}  // namespace platform
