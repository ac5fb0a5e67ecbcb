// What an operation throws.
#pragma once

#include <gmock/gmock.h>

#include "common/exception.h"

namespace qvn::test {

// Of a callable: that it throws Win32Exception with this message and code.
inline auto throwsWin32(const char* message, std::uint32_t code) {
  return testing::Throws<Win32Exception>(
      testing::AllOf(testing::Property(&Win32Exception::getMessage, message),
                     testing::Property(&Win32Exception::getCode, code)));
}

}  // namespace qvn::test
