// Memory that runs out at any allocation ends a public call with an exception and leaves the archive as it was; nothing
// that returns as if it had succeeded is incomplete.

#include <gtest/gtest.h>

#include "Tests/Zip/FaultAllocation.h"
#include "Tests/Zip/FaultWorkbench.h"

namespace {

using fault::Operation;

class OutOfMemory : public testing::TestWithParam<Operation> {};

struct Result {
  bool failed = false;
  std::string text;
};

Result attempt(const Operation& operation, const fault::Workbench& bench) {
  try {
    return {false, operation.run(bench)};
  } catch (const std::exception&) {
    return {true, {}};
  }
}

TEST_P(OutOfMemory, IsAnOrderlyFailure) {
  const Operation& operation = GetParam();
  const fault::Workbench bench;
  const Result whole = attempt(operation, bench);
  ASSERT_FALSE(whole.failed);
  const auto done = bench.contents();
  for (const bool fromThenOn : {false, true}) {
    bool hit = true;
    for (long number = 1; hit; ++number) {
      SCOPED_TRACE("allocation " + std::to_string(number) + (fromThenOn ? " and all after it" : ""));
      bench.reset();
      Result result;
      {
        const fault::FailingAllocation failing(number, fromThenOn);
        result = attempt(operation, bench);
        hit = failing.hit();
      }
      if (result.failed) {
        EXPECT_TRUE(hit);
        const std::string bytes = bench.archiveBytes();
        const bool mayBeDone = operation.onFailure == Operation::OnFailure::archiveAsBeforeOrDone;
        EXPECT_TRUE(bytes == bench.originalArchive() || (mayBeDone && bytes.size() < bench.originalArchive().size()));
      } else {
        EXPECT_TRUE(result.text == whole.text);
        EXPECT_TRUE(bench.contents() == done);
      }
      if (HasFailure()) return;
      ASSERT_LT(number, 100'000);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Operations, OutOfMemory, testing::ValuesIn(fault::operations()), fault::nameOf<Operation>);

}  // namespace
