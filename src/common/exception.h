// The exceptions that the inner layers throw and the outer layers turn back into result codes.
#pragma once

#include <cstdint>
#include <string>

namespace qvn {

class Exception {
 public:
  // What failed, the result code it maps to, and where it was thrown (an empty file and line 0 when the place
  // says nothing).
  Exception(std::string message, std::uint32_t code, std::string file, std::int32_t line);
  Exception(const Exception&) = default;
  Exception& operator=(const Exception&) = default;
  virtual ~Exception();

  // The code in decimal; empty for 0.
  virtual std::string getErrorText() const;
  virtual std::uint32_t getCode() const;
  virtual const std::string& getMessage() const;

  // "file:F:L: message: error text", the parts that there are; what log lines show after "exception=".
  std::string describe() const;

 private:
  std::string message_;
  std::uint32_t code_;
  std::string file_;
  std::int32_t line_;
};

// A failure with a system error code: what the library throws.
class Win32Exception : public Exception {
 public:
  using Exception::Exception;

  // "Win32(", the code in decimal and the system's message for it, without line breaks; empty for 0.
  std::string getErrorText() const override;
};

// The code of the exception that is being handled: its own, 8 for a lack of memory, 1359 for what is not the
// library's.
std::uint32_t codeOfCurrentException() noexcept;

}  // namespace qvn
