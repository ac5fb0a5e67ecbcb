#include "discovery/device_answer.h"

#include <algorithm>
#include <charconv>

#include "shared/base/families.h"
#include "shared/base/plain_text.h"

namespace qvn::ipv4 {
namespace {

constexpr std::string_view kWithoutNpa =
    shared::kBpdPrinterFamily;  // the one family that may lack a bidi port

bool takeText(std::string_view value, std::string& out) {
  if (!shared::isPlainText(value)) return false;
  out = value;
  return true;
}

bool takePort(std::string_view value, std::uint16_t& out) {
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), out);
  return error == std::errc() && end == value.data() + value.size();
}

bool takeLine(std::string_view key, std::string_view value, DeviceAnswer& answer) {
  if (key == "family") return takeText(value, answer.family);
  if (key == "model") return takeText(value, answer.model);
  if (key == "serial") return takeText(value, answer.serial);
  if (key == "name") return takeText(value, answer.name);
  if (key == "print") return takePort(value, answer.printPort);
  if (key == "bidi") return takePort(value, answer.bidiPort);
  if (key == "scan") return takePort(value, answer.scanPort);
  if (key == "hid") return takePort(value, answer.hidPort);
  return true;
}

}  // namespace

std::string discoveryQuestion(std::string_view token) {
  return "QVN-DISCOVER 1 " + std::string(token) + "\n";
}

std::optional<DeviceAnswer> parseAnswer(std::string_view datagram, std::string_view token) {
  const std::string heading = "QVN-DEVICE 1 " + std::string(token) + "\n";
  if (datagram.size() > kMaxAnswer || !datagram.starts_with(heading)) return std::nullopt;
  datagram.remove_prefix(heading.size());
  DeviceAnswer answer;
  while (!datagram.empty()) {
    const std::size_t end = datagram.find('\n');
    if (end == std::string_view::npos) return std::nullopt;  // cut short
    const std::string_view line = datagram.substr(0, end);
    datagram.remove_prefix(end + 1);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    if (!takeLine(line.substr(0, equals), line.substr(equals + 1), answer)) return std::nullopt;
  }
  const bool complete = !answer.family.empty() && !answer.model.empty() && !answer.serial.empty() &&
                        answer.printPort != 0 && (answer.bidiPort != 0 || answer.family == kWithoutNpa);
  if (!complete) return std::nullopt;
  return answer;
}

}  // namespace qvn::ipv4
