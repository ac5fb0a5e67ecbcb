// Runs qvn and expects success.
#pragma once

#include <gmock/gmock.h>

#include "support/process/child.h"

namespace qvn::test {

inline std::string ok(const std::vector<std::string>& arguments, const std::string& input = "") {
  const Result result = qvn(arguments, input);
  EXPECT_EQ(result.exitCode, 0) << testing::PrintToString(arguments) << "\n" << result.errors;
  EXPECT_THAT(result.errors, testing::IsEmpty()) << testing::PrintToString(arguments);
  return result.output;
}

}  // namespace qvn::test
