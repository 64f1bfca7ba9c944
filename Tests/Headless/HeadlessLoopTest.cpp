#include "Backends/Headless/HeadlessLoop.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <limits>
#include <stdexcept>
#include <string>

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

TEST(HeadlessLoop, AWatchedDescriptorIsWaitedFor) {
  HeadlessLoop loop;
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
  std::string got;
  std::uint64_t watch = 0;
  watch = loop.watch(ends[0], [&] {
    char byte = 0;
    ASSERT_EQ(read(ends[0], &byte, 1), 1);
    got += byte;
    if (got == "ab") loop.unwatch(watch);
  });
  ASSERT_EQ(write(ends[1], "abc", 3), 3);
  loop.wait(kForever);
  loop.wait(kForever);
  EXPECT_THROW(loop.wait(kForever), std::runtime_error) << "no longer watched";
  EXPECT_EQ(got, "ab");
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
}  // namespace headless
