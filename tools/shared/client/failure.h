// How a command tells that it did not succeed; main turns each kind into an exit code.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace qvn::cli {

// The operation failed (exit code 1). With a result code the sentence ends in the code's meaning and name.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& sentence);
  Failure(const std::string& sentence, std::uint32_t resultCode);

  // The result code; 0 without one.
  std::uint32_t code() const { return code_; }

 private:
  std::uint32_t code_ = 0;
};

// The arguments do not make sense together, or one names nothing that exists (exit code 2).
class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// SIGINT or SIGTERM ended the command after it had cleaned up (exit code 130).
class Interrupted : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// "the handle is invalid (result 6, QRN_ERROR_INVALID_HANDLE)".
std::string describeResult(std::uint32_t code);

// Throws Failure with the sentence unless the code is 0.
void require(std::uint32_t code, const std::string& sentence);

}  // namespace qvn::cli
