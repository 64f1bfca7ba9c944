#include "Platform/Foundation/RunLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Backends/Headless/HeadlessBackend.h"
#include "Platform/Foundation/DispatchQueue.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Timer.h"

namespace platform {
namespace {

using testing::ElementsAre;

constexpr double kForever = std::numeric_limits<double>::infinity();

class RunLoopTest : public testing::Test {
 protected:
  headless::HeadlessBackend desktop_;
  Session session_{desktop_};
  std::vector<std::string> happened_;
  std::function<void()> noting(std::string what) {
    return [this, what = std::move(what)] { happened_.push_back(what); };
  }
};

TEST_F(RunLoopTest, BlocksRunInOrderAndWhatTheyPostRunsLater) {
  DispatchQueue::main().async([&] {
    happened_.push_back("first");
    DispatchQueue::main().async(noting("posted by first"));
  });
  DispatchQueue::main().async(noting("second"));
  RunLoop::main().runDue();
  EXPECT_THAT(happened_, ElementsAre("first", "second"));
  RunLoop::main().runDue();
  EXPECT_THAT(happened_, ElementsAre("first", "second", "posted by first"));
}

TEST_F(RunLoopTest, ALoopInsideABlockTakesTheBlocksAfterItOnceAndInOrder) {
  bool done = false;
  DispatchQueue::main().async([&] {
    happened_.push_back("outer begins");
    RunLoop::main().runUntil([&] { return done; }, kForever);
    happened_.push_back("outer ends");
  });
  DispatchQueue::main().async(noting("a"));
  DispatchQueue::main().async([&] {
    happened_.push_back("b");
    done = true;
  });
  DispatchQueue::main().async(noting("c"));
  desktop_.settle();
  EXPECT_THAT(happened_, ElementsAre("outer begins", "a", "b", "c", "outer ends"));
}

TEST_F(RunLoopTest, AFloodOfBlocksLeavesRoomForInput) {
  for (int i = 0; i < 1000; ++i) DispatchQueue::main().async(noting("block"));
  desktop_.loop().deliver(noting("input"));
  desktop_.loop().wait(kForever);
  const auto input = std::ranges::find(happened_, "input") - happened_.begin();
  EXPECT_LT(input, 200);
  desktop_.settle();
  EXPECT_EQ(happened_.size(), 1001u);
}

TEST_F(RunLoopTest, TimersFireInTheOrderOfTheirTimes) {
  Timer::scheduledTimer(0.3, false, [&](Timer&) { happened_.push_back("0.3"); });
  Timer::scheduledTimer(0.1, false, [&](Timer&) { happened_.push_back("0.1"); });
  DispatchQueue::main().asyncAfter(0.2, noting("0.2"));
  desktop_.advance(0.25);
  EXPECT_THAT(happened_, ElementsAre("0.1", "0.2"));
  desktop_.advance(0.25);
  EXPECT_THAT(happened_, ElementsAre("0.1", "0.2", "0.3"));
}

TEST_F(RunLoopTest, ARepeatingTimerKeepsToItsRaster) {
  std::vector<double> times;
  const auto timer = Timer::scheduledTimer(1, true, [&](Timer&) {
    times.push_back(RunLoop::main().now());
    // Falls behind by two and a half intervals.
    if (times.size() == 2) desktop_.advance(2.5);
  });
  desktop_.advance(6);
  timer->invalidate();
  desktop_.advance(6);
  ASSERT_EQ(times.size(), 4u);
  const double expected[] = {1, 2, 5, 6};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(times[i], expected[i], 1e-9) << i;
}

TEST_F(RunLoopTest, ATimerInvalidatesItselfAndOthersWhileFiring) {
  std::shared_ptr<Timer> victim;
  const auto captured = std::make_shared<int>(7);
  auto timer = Timer::scheduledTimer(1, true, [&, captured](Timer& self) {
    self.invalidate();
    victim->invalidate();
    happened_.push_back(std::to_string(*captured));  // the block outlives its own invalidation
  });
  victim = Timer::scheduledTimer(1, true, [&](Timer&) { happened_.push_back("victim"); });
  desktop_.advance(5);
  EXPECT_THAT(happened_, ElementsAre("7"));
  EXPECT_EQ(captured.use_count(), 1) << "an invalid timer lets its block go";
}

TEST_F(RunLoopTest, ATimerDoesNotFireInsideItself) {
  int depth = 0, deepest = 0;
  const auto timer = Timer::scheduledTimer(0.1, true, [&](Timer&) {
    deepest = std::max(deepest, ++depth);
    RunLoop::main().runUntil([] { return false; }, RunLoop::main().now() + 0.35);
    --depth;
  });
  desktop_.advance(1);
  EXPECT_EQ(deepest, 1);
  timer->invalidate();
}

TEST_F(RunLoopTest, AThrowingBlockLeavesTheRestInPlace) {
  DispatchQueue::main().async([] { throw std::runtime_error("fault"); });
  DispatchQueue::main().async(noting("next"));
  const auto timer = Timer::scheduledTimer(1, true, [&](Timer&) {
    happened_.push_back("timer");
    if (happened_.size() == 2) throw std::runtime_error("fault");
  });
  EXPECT_THROW(desktop_.settle(), std::runtime_error);
  desktop_.settle();
  EXPECT_THROW(desktop_.advance(1), std::runtime_error);
  desktop_.advance(1);
  EXPECT_THAT(happened_, ElementsAre("next", "timer", "timer"));
  timer->invalidate();
}

TEST_F(RunLoopTest, RunUntilSaysWhetherItIsDone) {
  EXPECT_TRUE(RunLoop::main().runUntil([] { return true; }, kForever));
  const double start = RunLoop::main().now();
  EXPECT_FALSE(RunLoop::main().runUntil([] { return false; }, start + 2));
  EXPECT_EQ(RunLoop::main().now(), start + 2);
}

TEST_F(RunLoopTest, ASourceAddedByASourceRuns) {
  bool once = true;
  RunLoop::main().addSource([&] {
    if (!std::exchange(once, false)) return false;
    for (int i = 0; i < 100; ++i)
      RunLoop::main().addSource([&, ran = false]() mutable {
        if (!std::exchange(ran, true)) happened_.push_back("source");
        return false;
      });
    return true;
  });
  desktop_.settle();
  EXPECT_EQ(happened_.size(), 100u);
}

}  // namespace
}  // namespace platform
