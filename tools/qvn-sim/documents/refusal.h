// Why a host gets an exception instead of a response.
#pragma once

#include <stdexcept>

namespace sim {

class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace sim
