#include "Backends/Headless/HeadlessLoop.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace headless {
namespace {

constexpr double kForever = std::numeric_limits<double>::infinity();

TEST(HeadlessLoop, AnEndlessWaitForNothingIsAnError) {
  HeadlessLoop loop;
  EXPECT_THROW(loop.wait(kForever), std::runtime_error);
  loop.wake();
  EXPECT_NO_THROW(loop.wait(kForever));
  loop.wait(3);
  EXPECT_EQ(loop.now(), 3);
  loop.wait(1);
  EXPECT_EQ(loop.now(), 3) << "the clock never goes back";
  const double wallClock = loop.wallClock();
  loop.shiftWallClock(-3600);
  EXPECT_EQ(loop.wallClock(), wallClock - 3600);
  EXPECT_EQ(loop.now(), 3);
}

}  // namespace
}  // namespace headless
