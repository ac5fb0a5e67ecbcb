#include "descriptors/device_id.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "shared/base/families.h"
#include "shared/base/plain_text.h"

namespace qvn::usb1 {
namespace {

constexpr std::size_t kLengthSize = 2;
constexpr std::string_view kBlanks = " \t\r\n";

std::string_view asText(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// What comes before the separator, which is taken too.
std::string_view take(std::string_view& text, char separator) {
  const std::size_t end = std::min(text.find(separator), text.size());
  const std::string_view taken = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return trimmed(taken);
}

bool equals(std::string_view left, std::string_view right) {
  const auto upper = [](char c) { return std::toupper(static_cast<unsigned char>(c)); };
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [&](char a, char b) { return upper(a) == upper(b); });
}

bool isOneOf(std::string_view key, std::initializer_list<std::string_view> names) {
  return std::any_of(names.begin(), names.end(), [&](std::string_view name) { return equals(key, name); });
}

// The first value counts, and only one that may stand in an attribute text.
void keep(std::string& field, std::string_view value) {
  if (field.empty() && shared::isPlainText(value)) field = value;
}

bool mentionsNpa(std::string_view commands) {
  while (!commands.empty()) {
    if (isOneOf(take(commands, ','), {"NPA", "NPAP"})) return true;
  }
  return false;
}

std::string_view textOf(std::span<const std::uint8_t> answer) {
  if (answer.size() < kLengthSize) return {};
  const auto isLetter = [](std::uint8_t byte) { return std::isalpha(byte) != 0; };
  if (isLetter(answer[0]) && isLetter(answer[1])) return asText(answer);  // it has no length
  const std::string_view text = asText(answer.subspan(kLengthSize));
  for (const std::size_t length :
       {std::size_t{answer[0]} << 8 | answer[1], std::size_t{answer[1]} << 8 | answer[0]}) {
    if (length >= kLengthSize && length <= answer.size()) return text.substr(0, length - kLengthSize);
  }
  return text;
}

}  // namespace

DeviceId parseDeviceId(std::span<const std::uint8_t> answer) {
  DeviceId id;
  std::string_view text = textOf(answer);
  while (!text.empty()) {
    std::string_view value = take(text, ';');
    const std::string_view key = take(value, ':');
    value = trimmed(value);
    if (isOneOf(key, {"MDL", "MODEL"})) {
      keep(id.model, value);
    } else if (isOneOf(key, {"SN", "SERN", "SERIALNUMBER"})) {
      keep(id.serial, value);
    } else if (isOneOf(key, {"CMD", "COMMAND SET"})) {
      id.speaksNpa = id.speaksNpa || mentionsNpa(value);
    } else if (equals(key, "FAM") && isOneOf(value, {shared::kCpdPrinterFamily, shared::kBpdPrinterFamily})) {
      id.family =
          equals(value, shared::kCpdPrinterFamily) ? shared::kCpdPrinterFamily : shared::kBpdPrinterFamily;
    }
  }
  return id;
}

}  // namespace qvn::usb1
