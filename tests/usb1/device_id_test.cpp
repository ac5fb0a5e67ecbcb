// Device ids as printers send them.
#include <gtest/gtest.h>

#include "usb1/descriptors/device_id.h"
#include "usb1/usb_test.h"

namespace qvn::usb1 {
namespace {

using test::Bytes;

TEST(DeviceId, IsReadAsFarAsItCanBe) {
  const std::string whole = "MFG:Acme;MDL:Jet 3;CMD:PCL, npap ;SN:42;FAM:bpdprinter;";
  const auto with = [](std::uint8_t first, std::uint8_t second, const std::string& text) {
    Bytes bytes{first, second};
    bytes.insert(bytes.end(), text.begin(), text.end());
    return bytes;
  };
  const auto length = static_cast<std::uint8_t>(whole.size() + 2);
  const struct {
    const char* what;
    Bytes answer;
    const char* model;
    const char* serial;
    bool speaksNpa;
  } kCases[] = {
      {"as it should be", with(0, length, whole), "Jet 3", "42", true},
      {"lowest byte first", with(length, 0, whole), "Jet 3", "42", true},
      {"a length that is too long", with(9, 9, whole), "Jet 3", "42", true},
      {"a length that is too short", with(0, 20, whole), "Jet 3", "", false},
      {"no length", Bytes(whole.begin(), whole.end()), "Jet 3", "42", true},
      {"length only", with(0, 2, ""), "", "", false},
      {"one byte", {0}, "", "", false},
      {"nothing", {}, "", "", false},
      {"long keys, blanks", with(0, 0, " MANUFACTURER : A ;MODEL: Jet 3 ;SERN:42;COMMAND SET:NPA"), "Jet 3",
       "42", true},
      {"the first counts", with(0, 0, "MDL:Jet 3;MDL:Jet 4;SN:;SN:42;"), "Jet 3", "42", false},
      {"no text for attributes", with(0, 0, "MDL:<b>;SN:\x01;MDL:Jet 3"), "Jet 3", "", false},
      {"values of values", with(0, 0, "MDL:Jet 3;SN:42:43;:;;CMD:NPAX"), "Jet 3", "42:43", false},
  };
  for (const auto& c : kCases) {
    const DeviceId id = parseDeviceId(c.answer);
    EXPECT_EQ(id.model, c.model) << c.what;
    EXPECT_EQ(id.serial, c.serial) << c.what;
    EXPECT_EQ(id.speaksNpa, c.speaksNpa) << c.what;
  }
  EXPECT_EQ(parseDeviceId(kCases[0].answer).family, "BpdPrinter");
}

}  // namespace
}  // namespace qvn::usb1
