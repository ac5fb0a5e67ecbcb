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

#define QVN_NAMED(code) \
  { code, #code }
constexpr CodeName kCodeNames[] = {
    QVN_NAMED(QRN_ERROR_SUCCESS),
    QVN_NAMED(QRN_ERROR_INVALID_FUNCTION),
    QVN_NAMED(QRN_ERROR_ACCESS_DENIED),
    QVN_NAMED(QRN_ERROR_INVALID_HANDLE),
    QVN_NAMED(QRN_ERROR_INVALID_DATA),
    QVN_NAMED(QRN_ERROR_BAD_COMMAND),
    QVN_NAMED(QRN_ERROR_DUP_NAME),
    QVN_NAMED(QRN_ERROR_NETNAME_DELETED),
    QVN_NAMED(QRN_ERROR_INVALID_PARAMETER),
    QVN_NAMED(QRN_ERROR_DISK_FULL),
    QVN_NAMED(QRN_ERROR_INSUFFICIENT_BUFFER),
    QVN_NAMED(QRN_ERROR_BUSY),
    QVN_NAMED(QRN_ERROR_ALREADY_EXISTS),
    QVN_NAMED(QRN_ERROR_WAIT_TIMEOUT),
    QVN_NAMED(QRN_ERROR_IO_DEVICE),
    QVN_NAMED(QRN_ERROR_DEVICE_NOT_CONNECTED),
    QVN_NAMED(QRN_ERROR_NOT_FOUND),
    QVN_NAMED(QRN_ERROR_CANCELLED),
    QVN_NAMED(QRN_ERROR_CONNECTION_REFUSED),
    QVN_NAMED(QRN_ERROR_CONNECTION_INVALID),
    QVN_NAMED(QRN_ERROR_NETWORK_UNREACHABLE),
    QVN_NAMED(QRN_ERROR_HOST_UNREACHABLE),
    QVN_NAMED(QRN_ERROR_CONNECTION_ABORTED),
    QVN_NAMED(QRN_ERROR_REVISION_MISMATCH),
    QVN_NAMED(QRN_ERROR_INTERNAL_ERROR),
    QVN_NAMED(QRN_ERROR_TIMEOUT),
    QVN_NAMED(QRN_ERROR_DATATYPE_MISMATCH),
    QVN_NAMED(QRN_ERROR_UNKNOWN_PORT),
    QVN_NAMED(QRN_ERROR_PRINT_MONITOR_ALREADY_INSTALLED),
};
#undef QVN_NAMED

// What a code says of a device, and what to do; {} is where the device is.
struct Advice {
  std::uint32_t code;
  const char* sentence;
};

constexpr Advice kAdvice[] = {
    {QRN_ERROR_ACCESS_DENIED,
     "another program has it, or it is not for this user (on USB, the udev rule 70-qvn-usb.rules is for the "
     "group lp)"},
    {QRN_ERROR_INVALID_DATA, "{} sent what no such device sends: is another kind of device there?"},
    {QRN_ERROR_DUP_NAME, "another program has it open: try again when that has ended"},
    {QRN_ERROR_NETNAME_DELETED,
     "{} closed the connection: was it switched off, or does it serve another host?"},
    {QRN_ERROR_BUSY, "it is in use: try again when that has ended"},
    {QRN_ERROR_IO_DEVICE, "{} stalls: switch it off and on"},
    {QRN_ERROR_DEVICE_NOT_CONNECTED, "it is not plugged in, or switched off"},
    {QRN_ERROR_CONNECTION_REFUSED, "nothing listens at {}: is it switched on?"},
    {QRN_ERROR_CONNECTION_INVALID, "the connection to {} has gone: try again"},
    {QRN_ERROR_NETWORK_UNREACHABLE, "no network leads to {}: is this machine connected?"},
    {QRN_ERROR_HOST_UNREACHABLE, "no machine answers at {}: is it switched on, and its address right?"},
    {QRN_ERROR_CONNECTION_ABORTED, "this side ended the connection to {}"},
    {QRN_ERROR_TIMEOUT, "{} does not answer in time: is it switched on, and its address right?"},
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

std::string nameOf(std::uint32_t code) {
  std::string number = "result " + std::to_string(code);
  for (const CodeName& entry : kCodeNames) {
    if (entry.code == code) return number + ", " + entry.name;
  }
  return number;
}

}  // namespace

std::string withCode(const std::string& reason, std::uint32_t code) {
  return reason.empty() ? nameOf(code) : reason + " (" + nameOf(code) + ")";
}

std::string describeResult(std::uint32_t code) { return withCode(meaning(code), code); }

std::string describeResult(std::uint32_t code, const std::string& place) {
  for (const Advice& advice : kAdvice) {
    if (advice.code != code) continue;
    std::string sentence = advice.sentence;
    if (const std::size_t at = sentence.find("{}"); at != std::string::npos) sentence.replace(at, 2, place);
    return withCode(sentence, code);
  }
  return describeResult(code);
}

Failure::Failure(const std::string& sentence) : std::runtime_error(sentence) {}

Failure::Failure(const std::string& sentence, std::uint32_t resultCode)
    : std::runtime_error(sentence + ": " + describeResult(resultCode)), code_(resultCode) {}

Failure::Failure(const std::string& sentence, std::uint32_t resultCode, const std::string& place)
    : std::runtime_error(sentence + ": " + describeResult(resultCode, place)), code_(resultCode) {}

void require(std::uint32_t code, const std::string& sentence) {
  if (code != QRN_ERROR_SUCCESS) {
    throw Failure(sentence, code);
  }
}

}  // namespace qvn::cli
