#include "common/exception.h"

#include <algorithm>
#include <new>
#include <utility>

#include "platform/base/error.h"
#include "platform/process/system_information.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

std::string systemMessage(std::uint32_t code) {
  std::string text;
  const platform::ErrorCode error = platform::messageText(code, text);
  if (error != platform::kSuccess) return "Error getting message:" + std::to_string(error);
  std::erase(text, '\r');
  std::erase(text, '\n');
  return text;
}

}  // namespace

Exception::Exception(std::string message, std::uint32_t code, std::string file, std::int32_t line)
    : message_(std::move(message)), code_(code), file_(std::move(file)), line_(line) {}

Exception::~Exception() = default;

std::string Exception::getErrorText() const { return code_ == 0 ? std::string() : std::to_string(code_); }

std::uint32_t Exception::getCode() const { return code_; }

const std::string& Exception::getMessage() const { return message_; }

std::string Exception::describe() const {
  std::string text;
  if (!file_.empty()) text = "file:" + file_ + ":" + std::to_string(line_) + ": ";
  text += message_;
  const std::string error = getErrorText();
  if (!error.empty()) text += ": " + error;
  return text;
}

std::string Win32Exception::getErrorText() const {
  return getCode() == 0 ? std::string() : "Win32(" + std::to_string(getCode()) + systemMessage(getCode());
}

std::uint32_t codeOfCurrentException() noexcept {
  try {
    throw;
  } catch (const Exception& exception) {
    return exception.getCode() != 0 ? exception.getCode() : QRN_ERROR_INTERNAL_ERROR;
  } catch (const std::bad_alloc&) {
    return platform::kNotEnoughMemory;
  } catch (...) {
    return QRN_ERROR_INTERNAL_ERROR;
  }
}

}  // namespace qvn
