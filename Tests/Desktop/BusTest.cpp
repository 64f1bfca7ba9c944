#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "Tests/Desktop/Machine.h"

namespace desktop_tests {

using platform::Dictionary;
using platform::Value;

namespace {

TEST(DesktopBus, APayloadArrivesWholeInAnotherProcessAndNotInOurs) {
  Machine& machine = desktopMachine();
  auto* broadcast = machine.backend().broadcast();
  int own = 0;
  broadcast->setReceiver([&](const auto&, const auto&, const auto&) { ++own; });
  broadcast->observe("mirelo_nested");
  // The observer says when it listens by its first line; what it saw is its second.
  std::string seen;
  FILE* observer = popen("timeout 8 dbus-monitor --session --profile \"arg0='mirelo_nested'\"", "r");
  ASSERT_NE(observer, nullptr);
  const auto watch = machine.backend().loop().watch(fileno(observer), [&] {
    char buffer[1024];
    const ssize_t count = read(fileno(observer), buffer, sizeof buffer);
    if (count > 0) seen.append(buffer, static_cast<std::size_t>(count));
  });
  EXPECT_TRUE(machine.spin([&] {
    broadcast->post("mirelo_nested", "", {{"list", Value::Array{Value(1), Value(true), Value("둘")}}});
    return seen.find("com.brenholt.VeltrikAppKit.Notifications\tPosted") != std::string::npos;
  })) << seen;
  machine.backend().loop().unwatch(watch);
  broadcast->setReceiver(nullptr);
  EXPECT_EQ(own, 0);
  pclose(observer);
}

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
