#include "qvn/transport/attribute_codec.h"

#include <gtest/gtest.h>

#include <string>

#include "qvn/transport/attributes.h"

namespace qvn {
namespace {

TEST(AttributeCodec, WritesElementsInTheOrderOfTheirNames) {
  std::string text;
  EXPECT_EQ(AttributeCodec::setString(text, attribute::kPortname, "USB001"), 0u);
  EXPECT_EQ(AttributeCodec::setLong(text, attribute::kHandle, 7), 0u);
  EXPECT_EQ(AttributeCodec::setString(text, attribute::kDevice, "CpdPrinter"), 0u);
  EXPECT_EQ(text, "<Device>CpdPrinter</Device><Handle>7</Handle><Portname>USB001</Portname>");
  EXPECT_EQ(AttributeCodec::setLong(text, attribute::kHandle, 4294967295u), 0u);
  EXPECT_EQ(text, "<Device>CpdPrinter</Device><Handle>4294967295</Handle><Portname>USB001</Portname>");
}

TEST(AttributeCodec, ChecksTheTypeBeforeAnythingElse) {
  std::string text = "<Handle>7</Handle>";
  std::uint32_t value = 1;
  std::string string = "kept";
  std::uint8_t byte = 0;
  std::uint32_t length = 5;
  EXPECT_EQ(AttributeCodec::getLong(text, attribute::kPortname, value), 1629u);
  EXPECT_EQ(AttributeCodec::getString(text, attribute::kHandle, string), 1629u);
  EXPECT_EQ(AttributeCodec::getByteArray(text, attribute::kHandle, &byte, 1, length), 1629u);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(AttributeCodec::setLong(text, attribute::kPortname, 1), 1629u);
  EXPECT_EQ(AttributeCodec::setString(text, attribute::kHandle, "x"), 1629u);
  EXPECT_EQ(AttributeCodec::setByteArray(text, attribute::kHandle, &byte, 1), 1629u);
  EXPECT_EQ(AttributeCodec::getLong(text, "no descriptor", value), 1629u);
  EXPECT_EQ(text, "<Handle>7</Handle>");
  EXPECT_EQ(value, 1u);
  EXPECT_EQ(string, "kept");
}

TEST(AttributeCodec, WritesOnlyWhatIsReadBackAsItIs) {
  const std::string type = "<Type>String</Type>";
  const std::pair<std::string, std::string> refused[] = {
      {attribute::kPortname, "x</Portname><Handle>9</Handle>"},
      {"<Name>A>1</A><Handle</Name>" + type, "9"},
      {"<Name>/A</Name>" + type, "x"},
      {"<Name>A/</Name>" + type, "x"},
      {type, "x"},
  };
  std::string text = "<Handle>7</Handle>";
  for (const auto& [descriptor, value] : refused) {
    EXPECT_EQ(AttributeCodec::setString(text, descriptor, value), 87u) << descriptor << value;
    EXPECT_EQ(text, "<Handle>7</Handle>") << descriptor << value;
  }
  EXPECT_EQ(AttributeCodec::setString(text, attribute::kPortname, "</Handle></Portname"), 0u);
  std::string value;
  EXPECT_EQ(AttributeCodec::getString(text, attribute::kPortname, value), 0u);
  EXPECT_EQ(value, "</Handle></Portname");
}

TEST(AttributeCodec, ByteArraysAreTwoDigitsAByte) {
  std::string text;
  const std::uint8_t bytes[] = {0x01, 0xAB};
  EXPECT_EQ(AttributeCodec::setByteArray(text, attribute::kMacAddress, bytes, 2), 0u);
  EXPECT_EQ(text, "<MacAddress>01AB</MacAddress>");
  std::uint8_t read[2] = {0x55, 0x55};
  std::uint32_t length = 0;
  EXPECT_EQ(AttributeCodec::getByteArray(text, attribute::kMacAddress, read, 1, length), 122u);
  EXPECT_EQ(length, 2u);
  EXPECT_EQ(read[0], 0x55);
  EXPECT_EQ(AttributeCodec::getByteArray(text, attribute::kMacAddress, read, 2, length), 0u);
  EXPECT_EQ(read[1], 0xAB);
  EXPECT_EQ(
      AttributeCodec::getByteArray("<MacAddress>zz1</MacAddress>", attribute::kMacAddress, read, 2, length),
      0u)
      << "hostile digits are no failure";
  EXPECT_EQ(length, 1u);
}

TEST(AttributeCodec, TextsItNeverWroteAreReadAsFarAsTheyGo) {
  const struct {
    const char* text;
    std::uint32_t rc;
    const char* value;
  } cases[] = {
      {"<Portname/>", 0, ""},
      {"<Portname></Portname>", 0, ""},
      {"  <Handle>1</Handle>\n<Portname>a b</Portname>", 0, "a b"},
      {"<Portname>first</Portname><Portname>second</Portname>", 0, "first"},
      {"<Portname>a<b>c</Portname>", 0, "a<b>c"},
      {"<Portname>x</Portnames></Portname>", 0, "x</Portnames>"},
      {"</Portname><Portname>x</Portname>", 0, "x"},
      {"<Outer><Portname>x</Portname></Outer>", 1168, nullptr},
      {"<Portname>cut", 1168, nullptr},
      {"<Portname", 1168, nullptr},
      {"<", 1168, nullptr},
      {"<>x</><Portname>x</Portname>", 0, "x"},
  };
  for (const auto& c : cases) {
    std::string value;
    EXPECT_EQ(AttributeCodec::getString(c.text, attribute::kPortname, value), c.rc) << c.text;
    EXPECT_EQ(value, c.value == nullptr ? "" : c.value) << c.text;
  }
}

TEST(AttributeCodec, ReadsMegabytesInOnePass) {
  std::string text(4 << 20, '<');
  std::string value;
  EXPECT_EQ(AttributeCodec::getString(text, attribute::kPortname, value), 1168u);
  text = "<Nickname>" + std::string(4 << 20, 'x') + "</Nickname><Portname>p</Portname>";
  EXPECT_EQ(AttributeCodec::getString(text, attribute::kPortname, value), 0u);
  EXPECT_EQ(value, "p");
}

}  // namespace
}  // namespace qvn
