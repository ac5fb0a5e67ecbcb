// The fuzzers' logger: nothing is wanted.
#pragma once

#include <memory>

#include "common/logging/basic_logger.h"

namespace qvn::fuzz {

class SilentLogger : public BasicLogger {
 public:
  SilentLogger() : BasicLogger("fuzz.log") {}
  static void install() { BasicLogger::setInstance(std::make_unique<SilentLogger>()); }

 protected:
  bool isWanted(const Component&, std::uint32_t) const override { return false; }
};

}  // namespace qvn::fuzz
