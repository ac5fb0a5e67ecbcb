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
  // The same for an operation on a device at that place; it says what to do where that is known.
  Failure(const std::string& sentence, std::uint32_t resultCode, const std::string& place);

  // The result code; 0 without one.
  std::uint32_t code() const { return code_; }

 private:
  std::uint32_t code_ = 0;
};

// The arguments do not make sense together, or one names nothing that exists (exit code 2).
class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// SIGINT, SIGTERM or SIGHUP ended the command after it had cleaned up (exit code 130).
class Interrupted : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// "a plain printer takes no packets (result 1, QRN_ERROR_INVALID_FUNCTION)": where the caller knows why.
std::string withCode(const std::string& reason, std::uint32_t code);

// "the handle is invalid (result 6, QRN_ERROR_INVALID_HANDLE)".
std::string describeResult(std::uint32_t code);
// "nothing listens at 192.0.2.17 port 9100: is it switched on? (result 1225, ...)", for the place of a
// device.
std::string describeResult(std::uint32_t code, const std::string& place);

// Throws Failure with the sentence unless the code is 0.
void require(std::uint32_t code, const std::string& sentence);

}  // namespace qvn::cli
