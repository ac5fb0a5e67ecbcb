#include "shared/client/failure.h"

#include <cctype>

#include "platform/process/system_information.h"
#include "qvn/result_codes.h"

namespace qvn::cli {

namespace {

struct CodeName {
  std::uint32_t code;
  const char* name;
};

constexpr CodeName kCodeNames[] = {
    {QRN_ERROR_SUCCESS, "QRN_ERROR_SUCCESS"},
    {QRN_ERROR_INVALID_FUNCTION, "QRN_ERROR_INVALID_FUNCTION"},
    {QRN_ERROR_ACCESS_DENIED, "QRN_ERROR_ACCESS_DENIED"},
    {QRN_ERROR_INVALID_HANDLE, "QRN_ERROR_INVALID_HANDLE"},
    {QRN_ERROR_BAD_COMMAND, "QRN_ERROR_BAD_COMMAND"},
    {QRN_ERROR_DUP_NAME, "QRN_ERROR_DUP_NAME"},
    {QRN_ERROR_INVALID_PARAMETER, "QRN_ERROR_INVALID_PARAMETER"},
    {QRN_ERROR_INSUFFICIENT_BUFFER, "QRN_ERROR_INSUFFICIENT_BUFFER"},
    {QRN_ERROR_BUSY, "QRN_ERROR_BUSY"},
    {QRN_ERROR_ALREADY_EXISTS, "QRN_ERROR_ALREADY_EXISTS"},
    {QRN_ERROR_WAIT_TIMEOUT, "QRN_ERROR_WAIT_TIMEOUT"},
    {QRN_ERROR_NOT_FOUND, "QRN_ERROR_NOT_FOUND"},
    {QRN_ERROR_INTERNAL_ERROR, "QRN_ERROR_INTERNAL_ERROR"},
    {QRN_ERROR_TIMEOUT, "QRN_ERROR_TIMEOUT"},
    {QRN_ERROR_DATATYPE_MISMATCH, "QRN_ERROR_DATATYPE_MISMATCH"},
    {QRN_ERROR_UNKNOWN_PORT, "QRN_ERROR_UNKNOWN_PORT"},
    {QRN_ERROR_PRINT_MONITOR_ALREADY_INSTALLED, "QRN_ERROR_PRINT_MONITOR_ALREADY_INSTALLED"},
};

// The system's message as the tail of a sentence: no line end, no full stop, a small first letter. Empty when
// there is none.
std::string meaning(std::uint32_t code) {
  std::string text;
  if (platform::messageText(code, text) != platform::kSuccess) {
    return "";
  }
  while (!text.empty() &&
         (std::isspace(static_cast<unsigned char>(text.back())) != 0 || text.back() == '.')) {
    text.pop_back();
  }
  if (text.size() > 1 && std::islower(static_cast<unsigned char>(text[1])) != 0) {
    text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
  }
  return text;
}

}  // namespace

std::string describeResult(std::uint32_t code) {
  std::string number = "result " + std::to_string(code);
  for (const CodeName& entry : kCodeNames) {
    if (entry.code == code) {
      number += std::string(", ") + entry.name;
    }
  }
  const std::string text = meaning(code);
  return text.empty() ? number : text + " (" + number + ")";
}

Failure::Failure(const std::string& sentence) : std::runtime_error(sentence) {}

Failure::Failure(const std::string& sentence, std::uint32_t resultCode)
    : std::runtime_error(sentence + ": " + describeResult(resultCode)), code_(resultCode) {}

void require(std::uint32_t code, const std::string& sentence) {
  if (code != QRN_ERROR_SUCCESS) {
    throw Failure(sentence, code);
  }
}

}  // namespace qvn::cli
