#include <gtest/gtest.h>

#include "Tests/Desktop/Machine.h"

namespace desktop_tests {

using platform::Dictionary;
using platform::Value;

namespace {

TEST(DesktopBus, WhatIsTooLargeTooDeepOrHasNoUtf8IsNotPosted) {
  auto* broadcast = desktopMachine().backend().broadcast();
  Value deep("end");
  for (int depth = 0; depth < 40; ++depth) deep = Value(Value::Array{deep});
  EXPECT_FALSE(broadcast->post("mirelo_bad", "", {{"large", std::string(2 << 20, 'x')}}));
  EXPECT_FALSE(broadcast->post("mirelo_bad", "", {{"deep", deep}}));
  EXPECT_FALSE(broadcast->post("mirelo_bad", "", {{"bytes", "\xff\xfe"}}));
  EXPECT_TRUE(broadcast->post("mirelo_good", "", {{"text", "한글"}, {"list", Value::Array{Value(1), Value(true)}}}));
}

}  // namespace

}  // namespace desktop_tests
