// What a device answers to a discovery question, one datagram each:
//
//   asked     "QVN-DISCOVER 1 <token>\n"
//   answered  "QVN-DEVICE 1 <token>\n", then lines "key=value\n": family, model, serial, name, print, bidi,
//            scan, hid
//
// A BpdPrinter that takes print data only has no bidi port: 0, or no such line. The same goes for the scan
// port of a device without a scanner and the hid port of one without a HID. Unknown keys are skipped, so that
// devices may tell more.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qvn::ipv4 {

// No answer is longer.
inline constexpr std::size_t kMaxAnswer = 1400;

struct DeviceAnswer {
  std::string family;
  std::string model;
  std::string serial;
  std::string name;
  std::uint16_t printPort = 0;
  std::uint16_t bidiPort = 0;  // 0: takes print data only
  std::uint16_t scanPort = 0;  // 0: has no scanner
  std::uint16_t hidPort = 0;   // 0: has no HID
};

std::string discoveryQuestion(std::string_view token);

// Nothing when the datagram does not answer that question, lacks something, or says something that must not
// get into an attribute text.
std::optional<DeviceAnswer> parseAnswer(std::string_view datagram, std::string_view token);

}  // namespace qvn::ipv4
