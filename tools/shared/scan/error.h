// Why a scan does not go on.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace qvn::scan {

enum class Problem {
  Busy,            // another host has the scanner
  NoSheet,         // the feeder is empty
  Refused,         // a setting that the scanner does not have
  Aborted,         // at the device
  Cancelled,       // from this side
  ConnectionLost,  // while a page was on its way
  Silent,          // nothing came for too long
  BadAnswer,       // the device does not keep to its protocol
  Failed,          // the library says no; the code tells why
};

class Error : public std::runtime_error {
 public:
  Error(Problem problem, const std::string& sentence, std::uint32_t code = 0)
      : std::runtime_error(sentence), problem_(problem), code_(code) {}

  Problem problem() const { return problem_; }
  // The library's result code; 0 without one.
  std::uint32_t code() const { return code_; }

 private:
  Problem problem_;
  std::uint32_t code_;
};

}  // namespace qvn::scan
