#include "Platform/Foundation/DispatchQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <future>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Backends/Headless/HeadlessBackend.h"
#include "Platform/Foundation/RunLoop.h"
#include "Platform/Foundation/Session.h"
#include "Platform/Foundation/Timer.h"

namespace platform {
namespace {

constexpr double kForever = std::numeric_limits<double>::infinity();

class DispatchQueueTest : public testing::Test {
 protected:
  headless::HeadlessBackend desktop_;
  std::optional<Session> session_{desktop_};
};

TEST_F(DispatchQueueTest, WorkGoesToOtherThreadsAndItsResultComesBackToTheMainOne) {
  const auto mainThread = std::this_thread::get_id();
  int wrongThreads = 0;
  std::vector<int> results;
  for (int i = 0; i < 200; ++i)
    DispatchQueue::global().async([&, i] {
      const bool offMain = std::this_thread::get_id() != mainThread;
      DispatchQueue::main().async([&, i, offMain] {
        if (!offMain || std::this_thread::get_id() != mainThread) ++wrongThreads;
        results.push_back(i);
      });
    });
  desktop_.settle();
  EXPECT_EQ(std::set<int>(results.begin(), results.end()).size(), 200u);
  EXPECT_EQ(results.size(), 200u);
  EXPECT_EQ(wrongThreads, 0);
}

TEST_F(DispatchQueueTest, BlocksOfOneThreadKeepTheirOrder) {
  constexpr int kThreads = 4, kBlocks = 500;
  std::vector<std::vector<int>> seen(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&seen, thread] {
      for (int i = 0; i < kBlocks; ++i)
        DispatchQueue::main().async([&seen, thread, i] { seen[static_cast<std::size_t>(thread)].push_back(i); });
    });
  for (std::thread& thread : threads) thread.join();
  desktop_.settle();
  for (const auto& each : seen) {
    ASSERT_EQ(each.size(), static_cast<std::size_t>(kBlocks));
    EXPECT_TRUE(std::ranges::is_sorted(each));
  }
}

TEST_F(DispatchQueueTest, BlocksRunSideBySide) {
  // Each waits for the other: one after the other they would never end. And the main thread waits for both.
  for (int round = 0; round < 50; ++round) {
    std::promise<void> first, second;
    std::atomic<bool> done = false, ended = false;
    DispatchQueue::global().async([&] {
      first.set_value();
      second.get_future().wait();
      DispatchQueue::main().async([&] { done = true; });
    });
    DispatchQueue::global().async([&] {
      first.get_future().wait();
      second.set_value();
      DispatchQueue::main().async([&] { ended = true; });
    });
    ASSERT_TRUE(RunLoop::main().runUntil([&] { return done && ended; }, kForever)) << round;
  }
}

TEST_F(DispatchQueueTest, ADelayCountsByTheSessionsClockFromAnyThread) {
  std::vector<double> times;
  const auto note = [&] { times.push_back(RunLoop::main().now()); };
  std::atomic<int> onWorker = 0;
  DispatchQueue::global().async([&] { DispatchQueue::main().asyncAfter(0.5, note); });
  DispatchQueue::global().asyncAfter(0.25, [&] { ++onWorker; });
  desktop_.advance(0.2);
  EXPECT_TRUE(times.empty());
  EXPECT_EQ(onWorker, 0);
  desktop_.advance(0.8);
  ASSERT_EQ(times.size(), 1u);
  EXPECT_NEAR(times[0], 0.5, 1e-9);
  EXPECT_EQ(onWorker, 1);
}

TEST_F(DispatchQueueTest, TheSessionsEndWaitsForStartedWorkAndDropsTheRest) {
  const auto token = std::make_shared<int>();
  std::promise<void> started;
  std::promise<void> go;
  std::atomic<bool> finished = false;
  DispatchQueue::global().async([&, token] {
    started.set_value();
    go.get_future().wait();
    finished = true;
    DispatchQueue::main().async([token] { ADD_FAILURE() << "ran after the end"; });
  });
  started.get_future().wait();
  DispatchQueue::main().async([token] { ADD_FAILURE() << "ran at the end"; });
  DispatchQueue::main().asyncAfter(1, [token] { ADD_FAILURE() << "ran at the end"; });
  Timer::scheduledTimer(1, true, [token](Timer&) { ADD_FAILURE() << "fired at the end"; });
  std::thread releaser([&] { go.set_value(); });
  session_.reset();
  releaser.join();
  EXPECT_TRUE(finished);
  EXPECT_EQ(token.use_count(), 1) << "pending work is destroyed with the session";
}

TEST_F(DispatchQueueTest, WorkDroppedAtTheEndStillFindsTheSession) {
  struct Last {
    ~Last() {
      // As a window would that is held by a pending block alone.
      DispatchQueue::main().async([] {});
      Timer::scheduledTimer(1, false, [](Timer&) {});
    }
  };
  auto last = std::make_shared<Last>();
  DispatchQueue::main().async([last = std::move(last)] {});
  EXPECT_NO_FATAL_FAILURE(session_.reset());
  EXPECT_FALSE(Session::exists());
}

TEST_F(DispatchQueueTest, MainThreadOperationsRefuseOtherThreads) {
  int refused = 0;
  std::thread([&] {
    const std::function<void()> operations[] = {
        [] { RunLoop::main().runDue(); },
        [] { RunLoop::main().turn(0); },
        [] { Timer::scheduledTimer(1, false, [](Timer&) {}); },
        [] { RunLoop::main().addSource([] { return false; }); },
    };
    for (const auto& operation : operations) try {
        operation();
      } catch (const std::logic_error&) {
        ++refused;
      }
  }).join();
  EXPECT_EQ(refused, 4);
}

TEST(Session, ThereIsOneAtATime) {
  headless::HeadlessBackend desktop;
  EXPECT_THROW(Session::current(), std::logic_error);
  for (int round = 0; round < 2; ++round) {
    Session session(desktop);
    EXPECT_THROW(Session another(desktop), std::logic_error);
    EXPECT_EQ(&Session::current(), &session);
  }
  EXPECT_FALSE(Session::exists());
}

}  // namespace
}  // namespace platform
