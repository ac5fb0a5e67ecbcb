// How operations on elements fail.
#pragma once

#include <string>

#include "common/exception.h"

namespace qvn {

[[noreturn]] inline void failElement(std::string text, std::uint32_t code = 0) {
  throw Win32Exception(std::move(text), code, {}, 0);
}

}  // namespace qvn
