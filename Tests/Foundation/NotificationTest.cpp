#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "Backends/Headless/HeadlessBackend.h"
#include "Platform/Foundation/DistributedNotificationCenter.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/PassthroughSubject.h"
#include "Platform/Foundation/Session.h"
#include "Tests/LogCapture.h"

namespace platform {
namespace {

using testing::ElementsAre;
using Center = DistributedNotificationCenter;

TEST(NotificationCenter, ObserversMayComeAndGoWhileOneRuns) {
  headless::HeadlessBackend desktop;
  const Session session(desktop);
  NotificationCenter& center = NotificationCenter::defaultCenter();
  const int first = 1, second = 2, third = 3;
  std::vector<std::string> heard;
  const auto kept = std::make_shared<std::string>("first");
  center.addObserver(&first, "news", nullptr, [&, kept](const Notification&) {
    center.removeObserver(&first);
    center.removeObserver(&second);
    center.addObserver(&third, "news", nullptr, [&](const Notification&) { heard.push_back("third"); });
    heard.push_back(*kept);  // the handler outlives its own removal
  });
  center.addObserver(&second, "news", nullptr, [&](const Notification&) { heard.push_back("second"); });
  center.post({"news", nullptr, {}});
  EXPECT_THAT(heard, ElementsAre("first"));
  center.post({"news", nullptr, {}});
  EXPECT_THAT(heard, ElementsAre("first", "third"));
  EXPECT_EQ(kept.use_count(), 1);
}

TEST(NotificationCenter, NameAndSenderChoose) {
  headless::HeadlessBackend desktop;
  const Session session(desktop);
  NotificationCenter& center = NotificationCenter::defaultCenter();
  const int one = 1, other = 2;
  int any = 0, ofOne = 0;
  center.addObserver(&any, "news", nullptr, [&](const Notification&) { ++any; });
  center.addObserver(&ofOne, "news", &one, [&](const Notification&) { ++ofOne; });
  for (const void* sender : {static_cast<const void*>(&one), static_cast<const void*>(&other), (const void*)nullptr}) {
    center.post({"news", sender, {}});
    center.post({"other news", sender, {}});
  }
  EXPECT_EQ(any, 3);
  EXPECT_EQ(ofOne, 1);
}

class DistributedTest : public testing::Test {
 protected:
  DistributedTest() {
    center_.addObserver(this, "n", "", Center::kSuspensionDeliverImmediately,
                        [this](const std::string&, const Dictionary& userInfo) { heard_.push_back(userInfo); });
  }
  void post(Dictionary userInfo) { center_.post("n", "", userInfo, Center::kDeliverImmediately); }
  void receive(Dictionary userInfo) { desktop_.broadcast()->receiveFromOtherProcess({"n", "", std::move(userInfo)}); }

  LogCapture capture_;
  std::vector<std::string>& logged_ = capture_.lines;
  headless::HeadlessBackend desktop_;
  Session session_{desktop_};
  Center& center_ = Center::defaultCenter();
  std::vector<Dictionary> heard_;
};

TEST_F(DistributedTest, WhatIsPostedAndReceivedKeepsItsOrder) {
  receive({{"k", 1}});
  desktop_.settle();
  post({{"k", 2}});
  EXPECT_EQ(heard_.size(), 1u) << "an own post is heard later";
  receive({{"k", 3}});
  receive({{"k", 4}});
  desktop_.settle();
  post({{"k", 5}});
  desktop_.settle();
  EXPECT_THAT(heard_, ElementsAre(Dictionary{{"k", 1}}, Dictionary{{"k", 2}}, Dictionary{{"k", 3}},
                                  Dictionary{{"k", 4}}, Dictionary{{"k", 5}}));
}

Value nested(int depth) {
  Value value = 1;
  for (int i = 0; i < depth; ++i) value = Value::Array{std::move(value)};
  return value;
}

TEST_F(DistributedTest, PayloadsThatMayNotCrossStayInside) {
  const struct {
    const char* name;
    Dictionary payload;
    bool crosses;
  } rows[] = {
      {"empty", {}, true},
      {"everything", {{"t", "x"}, {"n", 1}, {"d", 1.5}, {"b", true}, {"a", Value::Array{1, "x"}}}, true},
      {"null", {{"k", Value()}}, false},
      {"null within", {{"k", Value::Array{Value()}}}, false},
      {"deepest", {{"k", nested(Center::kDeepestPayload - 1)}}, true},
      {"too deep", {{"k", nested(Center::kDeepestPayload)}}, false},
      {"just large", {{"k", std::string(Center::kLargestPayload - 64, 'x')}}, true},
      {"too large", {{"k", std::string(Center::kLargestPayload, 'x')}}, false},
      {"too large a key", {{std::string(Center::kLargestPayload, 'x'), 1}}, false},
      {"too many", {{"k", Value::Array(Center::kLargestPayload / 8, Value(1))}}, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    heard_.clear();
    logged_.clear();
    desktop_.broadcast()->takePosted();
    post(row.payload);
    desktop_.settle();
    EXPECT_EQ(heard_.size(), 1u) << "own observers hear every post";
    EXPECT_EQ(desktop_.broadcast()->posted().size(), row.crosses ? 1u : 0u);
    EXPECT_EQ(logged_.size(), row.crosses ? 0u : 1u);

    heard_.clear();
    receive(row.payload);
    desktop_.settle();
    EXPECT_EQ(heard_.size(), row.crosses ? 1u : 0u) << "received";
  }
}

TEST_F(DistributedTest, TextThatIsNotUTF8IsMendedOnTheWayOutAndRefusedOnTheWayIn) {
  post({{"k", "a\xFFz"}});
  EXPECT_THAT(desktop_.broadcast()->posted(), ElementsAre(headless::BroadcastMessage{"n", "", {{"k", "a\uFFFDz"}}}));
  desktop_.settle();
  heard_.clear();
  receive({{"k", "a\xFFz"}});
  desktop_.settle();
  EXPECT_TRUE(heard_.empty());
}

TEST_F(DistributedTest, AFloodIsBoundedAndTheChannelRecovers) {
  // Delivered by the machine in one go, before the main queue gets its turn.
  desktop_.loop().deliver([this] {
    auto* const broadcast = desktop_.broadcast();
    for (std::size_t i = 0; i < 3 * Center::kMostPending; ++i) broadcast->receiveFromOtherProcess({"n", "", {}});
  });
  desktop_.settle();
  const std::size_t spread = heard_.size();
  EXPECT_EQ(spread, 3 * Center::kMostPending) << "what comes turn by turn is delivered turn by turn";
  const std::size_t large = Center::kLargestPayload - 64;
  int received = 0;
  center_.addObserver(this, "block", "", Center::kSuspensionDeliverImmediately,
                      [&](const std::string&, const Dictionary&) {
                        // The main queue is held while the machine keeps on delivering.
                        if (received++ > 0) return;
                        for (int i = 0; i < 40; ++i) receive({{"k", std::string(large, 'x')}});
                        heard_.clear();
                      });
  center_.post("block", "", {}, Center::kDeliverImmediately);
  desktop_.settle();
  EXPECT_GE(heard_.size(), 15u);
  heard_.clear();
  receive({{"k", "after"}});
  desktop_.settle();
  EXPECT_EQ(heard_.size(), 1u);
}

TEST_F(DistributedTest, WithoutAChannelPostsStayInTheProcess) {
  desktop_.faults().broadcastDown = true;
  post({{"k", 1}});
  desktop_.settle();
  EXPECT_EQ(heard_.size(), 1u);
  EXPECT_EQ(logged_.size(), 1u);
}

TEST_F(DistributedTest, OnlyTheWantedSenderAndNameAreHeard) {
  int fromApp = 0;
  center_.addObserver(&fromApp, "m", "app", Center::kSuspensionDeliverImmediately,
                      [&](const std::string&, const Dictionary&) { ++fromApp; });
  for (const char* sender : {"app", "other", ""}) desktop_.broadcast()->receiveFromOtherProcess({"m", sender, {}});
  desktop_.settle();
  EXPECT_EQ(fromApp, 1);
  EXPECT_TRUE(heard_.empty());
  center_.removeObserver(&fromApp);
  desktop_.broadcast()->receiveFromOtherProcess({"m", "app", {}});
  desktop_.settle();
  EXPECT_EQ(fromApp, 1);
}

TEST_F(DistributedTest, ThePostObserverSeesEveryPostAtOnce) {
  std::vector<std::string> posts;
  center_.setPostObserver([&](const std::string& name, const std::string&, const Dictionary&) {
    posts.push_back(name);
    center_.setPostObserver(nullptr);
  });
  post({});
  EXPECT_THAT(posts, ElementsAre("n"));
  post({});
  EXPECT_EQ(posts.size(), 1u);
}

TEST(DistributedNotificationCenter, AMachineWithoutBroadcastServesTheProcessItself) {
  headless::HeadlessBackend desktop({.hasBroadcast = false});
  const Session session(desktop);
  int heard = 0;
  Center::defaultCenter().addObserver(&heard, "n", "", 4, [&](const std::string&, const Dictionary&) { ++heard; });
  Center::defaultCenter().post("n", "", {}, Center::kDeliverImmediately);
  desktop.settle();
  EXPECT_EQ(heard, 1);
}

TEST(PassthroughSubject, HandlersMayCancelSubscribeSendAndDestroy) {
  auto subject = std::make_unique<PassthroughSubject<int>>();
  std::vector<std::string> seen;
  std::vector<AnyCancellable> subscriptions;
  const auto note = [&seen](std::string who) {
    return [&seen, who](int value) { seen.push_back(who + std::to_string(value)); };
  };
  std::optional<AnyCancellable> self, victim;
  const auto kept = std::make_shared<std::string>("self");
  self.emplace(subject->sink([&, kept](int value) {
    self->cancel();
    victim->cancel();
    subscriptions.push_back(subject->sink(note("late")));
    seen.push_back(*kept + std::to_string(value));
    if (value == 1) subject->send(2);
  }));
  victim.emplace(subject->sink(note("victim")));
  subject->send(1);
  EXPECT_THAT(seen, ElementsAre("self1", "late2"));
  EXPECT_EQ(kept.use_count(), 1);

  subscriptions.push_back(subject->sink([&](int) { subject.reset(); }));
  subscriptions.push_back(subject->sink(note("after the end")));
  subject->send(3);
  EXPECT_THAT(seen, ElementsAre("self1", "late2", "late3", "after the end3"));
}

TEST(PassthroughSubject, RemovingDuplicatesComparesWithTheValueBefore) {
  PassthroughSubject<int> subject;
  std::vector<int> seen, late;
  const AnyCancellable first = subject.removeDuplicates().sink([&](int value) { seen.push_back(value); });
  for (int value : {1, 1, 2}) subject.send(value);
  const AnyCancellable second = subject.removeDuplicates().sink([&](int value) { late.push_back(value); });
  for (int value : {2, 1, 1, 2}) subject.send(value);
  EXPECT_THAT(seen, ElementsAre(1, 2, 1, 2));
  EXPECT_THAT(late, ElementsAre(2, 1, 2)) << "each subscription compares for itself";
}

}  // namespace
}  // namespace platform
