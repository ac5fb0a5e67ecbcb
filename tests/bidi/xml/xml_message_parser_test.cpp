#include "bidi/xml/xml_message_parser.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "bidi/element/element_helpers.h"

namespace qvn::test {
namespace {

int parse(XMLMessageParser& parser, const std::string& document) {
  return parser.parse(document.data(), static_cast<std::uint32_t>(document.size()));
}

// What the document is read as; "unreadable" or "no message" when it is none, or the failure.
std::string read(const std::string& document) {
  XMLMessageParser parser;
  std::string text;
  const std::string failure = failureOf([&] {
    if (parse(parser, document) != 0) {
      text = "unreadable";
    } else {
      text = parser.message() == nullptr ? "no message" : shown(*parser.message());
    }
  });
  return failure == "no failure" ? text : failure;
}

// What a value within a response is read as.
std::string readValue(const std::string& value) {
  const std::string text = read("<?xml version=\"1.0\"?><response requestID=\"1\">" + value + "</response>");
  const std::string before = "{messageType: response, requestID: 1, result";
  if (!text.starts_with(before)) return text;
  return text.substr(before.size(), text.size() - before.size() - 1);
}

using Cases = std::vector<std::pair<std::string, std::string>>;

TEST(XMLMessageParser, ReadsMessages) {
  const Cases cases = {
      {"<?xml version=\"1.0\"?><response requestID=\"42\"><IntegerElem>7</IntegerElem></response>",
       "{messageType: response, requestID: 42, result: 7}"},
      {"<response requestID=\"42\"/>", "{messageType: response, requestID: 42}"},
      {"<response/>", "{messageType: response, requestID: }"},
      {"<response><NullElem/><IntegerElem>2</IntegerElem></response>",
       "{messageType: response, requestID: , result: 2}"},
      {"<exception requestID=\"5\"><message>it failed</message></exception>",
       "{messageType: exception, requestID: 5}"},
      {"<exception requestID=\"5\"><StringElem>x</StringElem></exception>",
       "{messageType: exception, requestID: 5, result: x}"},
      {"<method name=\"event\"><arg name=\"observer\">o</arg><arg name=\"data\"><NullElem/></arg></method>",
       "{data:NULL, messageType: method, observer: o, requestID: , systemRule: event}"},
      {"<method><arg name=\"a\">1</arg><arg name=\"a\">2</arg></method>",
       "{a: 2, messageType: method, requestID: , systemRule: }"},
      {"<method name=\"m\"><arg name=\"messageType\">response</arg></method>",
       "{messageType: method, requestID: , systemRule: m}"},
      {"<message name=\"m\"/>", "{messageType: method, requestID: , systemRule: m}"},
      {"<response requestID=\"1\"><method name=\"inner\"/></response>",
       "{messageType: response, requestID: 1}"},
      {"<x><response requestID=\"1\"/><response requestID=\"2\"/></x>",
       "{messageType: response, requestID: 2}"},
      {"<ListElem><NullElem/></ListElem>", "no message"},
      {"", "no message"},
      {"<!DOCTYPE response SYSTEM \"response.dtd\"><response requestID=\"1\"/>",
       "{messageType: response, requestID: 1}"},
  };
  for (const auto& [document, expected] : cases) EXPECT_EQ(read(document), expected) << document;
}

TEST(XMLMessageParser, ReadsValues) {
  const Cases cases = {
      {"<IntegerElem>#1F</IntegerElem>", ": 31"},
      {"<IntegerElem/>", ": 0"},
      {"<IntegerElem>12ab</IntegerElem>", "StringToi: illegal format: 12ab"},
      {"<StringElem> a\r\nb&lt;<!-- c -->d </StringElem>", ":  a\nb<d "},
      {"<StringElem encoding=\"x\">a</StringElem>", ": a"},
      {"<StringElem>a<NullElem/>b</StringElem>", ": ab"},
      {"<BooleanElem>YES</BooleanElem>", ": true"},
      {"<BooleanElem>1</BooleanElem>", ": false"},
      {"<DoubleElem> +2.5mm</DoubleElem>", ": 2.500000"},
      {"<DoubleElem>1e5000</DoubleElem>", ": inf"},
      {"<DoubleElem>-1e-5000</DoubleElem>", ": -0.000000"},
      {"<DoubleElem>-0x1.8p1</DoubleElem>", ": -3.000000"},
      {"<DoubleElem>+-5</DoubleElem>", ": 0.000000"},
      {"<DoubleElem> </DoubleElem>", ": 0.000000"},
      {"<NullElem>x</NullElem>", ":NULL"},
      {"<BinaryElem>Zm9v</BinaryElem>", "BinaryElem"},
      {"<ListElem>text<IntegerElem>1</IntegerElem><ListElem/><NullElem/></ListElem>", "[: 1, [], :NULL]"},
      {"<List><Integer>1</Integer></List>", "[: 1]"},
      {"<MapElem><child name=\"b\"><IntegerElem>1</IntegerElem></child><child name=\"a\"/></MapElem>",
       "{b: 1}"},
      {"<MapElem><child><NullElem/><IntegerElem>2</IntegerElem></child></MapElem>", "{: 2}"},
      {"<ListElem><child name=\"b\"><NullElem/></child></ListElem>", "[:NULL]"},
      {"<ListElem><CompositeElem><IntegerElem>1</IntegerElem></CompositeElem></ListElem>", "[]"},
      {"<arg>text</arg>", ": text"},
      {"<arg>text<NullElem/></arg>", ":NULL"},
  };
  for (const auto& [value, expected] : cases) EXPECT_EQ(readValue(value), expected) << value;
}

TEST(XMLMessageParser, TellsOfUnknownTagsAndPassesThemOver) {
  testing::internal::CaptureStdout();
  const std::string value =
      readValue("<ListElem><Xyz>x<NullElem/></Xyz><L/><IntegerElem>1</IntegerElem></ListElem>");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "UNKNOWN TYPE\r\nUNKNOWN TYPE\r\n");
  EXPECT_EQ(value, "[: 1]");
}

TEST(XMLMessageParser, RefusesWhatIsNotXml) {
  using namespace std::string_literals;
  const std::string documents[] = {
      "text <response/>",
      "<response></method>",
      "<response/>behind",
      "<response><StringElem>\xC3(</StringElem></response>",
      "<response><StringElem>a\0b</StringElem></response>"s,
      "<response/>\0"s,
      "<response>&unknown;</response>",
      // One entity of another: with a few more of them, ten times as much each time.
      "<!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">]>"
      "<response><StringElem>&b;</StringElem></response>",
      "<!DOCTYPE r [<!ENTITY a SYSTEM \"file:///etc/hostname\">]><response/>",
      "<!DOCTYPE r [<!ENTITY % a \"x\">]><response/>",
      "<!DOCTYPE r [<!ATTLIST response requestID CDATA \"1\">]><response/>",
  };
  for (const std::string& document : documents) EXPECT_EQ(read(document), "unreadable") << document;
  XMLMessageParser parser;
  EXPECT_EQ(parser.parse(nullptr, 5), -1);
}

TEST(XMLMessageParser, ADocumentCutAnywhereHasNoMessageUntilItsEnd) {
  const std::string document =
      "<?xml version=\"1.0\"?>\r\n<response requestID=\"42\">\r\n  <MapElem><child name=\"\xC3\xA4&#x41;\">"
      "<StringElem encoding='x'>&lt;<![CDATA[<]]></StringElem></child></MapElem>\r\n</response>\r\n";
  const std::size_t whole = document.find("</response>") + std::string("</response>").size();
  for (std::size_t length = 0; length <= document.size(); ++length) {
    EXPECT_EQ(read(document.substr(0, length)), length < whole
                                                    ? "no message"
                                                    : "{messageType: response, requestID: 42, result{\xC3\xA4"
                                                      "A: <<}}")
        << length;
  }
}

TEST(XMLMessageParser, EachDocumentReplacesTheLast) {
  XMLMessageParser parser;
  EXPECT_EQ(parse(parser, "<response requestID=\"1\"/>"), 0);
  EXPECT_NE(parser.message(), nullptr);
  EXPECT_EQ(parse(parser, "<response requestID=\"1\"/><"), 0) << "what follows is still to come";
  EXPECT_EQ(parse(parser, "no message"), -1);
  EXPECT_EQ(parser.message(), nullptr);
  EXPECT_THROW(parse(parser, "<response><IntegerElem>x</IntegerElem></response>"), Win32Exception);
  EXPECT_EQ(parser.message(), nullptr);
  EXPECT_EQ(parse(parser, "<response requestID=\"2\"/>"), 0);
  const std::unique_ptr<MapElem> message = parser.takeMessage();
  EXPECT_EQ(parser.message(), nullptr);
  EXPECT_EQ(message->getChild("requestID")->stringValue(), "2");
}

TEST(XMLMessageParser, ReadsDeepDocuments) {
  constexpr std::size_t kDeep = 1'000'000;
  std::string document = "<response requestID=\"1\">";
  for (std::size_t i = 0; i < kDeep; ++i) document += "<Li>";
  for (std::size_t i = 0; i < kDeep; ++i) document += "</Li>";
  XMLMessageParser parser;
  ASSERT_EQ(parse(parser, document + "</response>"), 0);
  EXPECT_EQ(depthOf(parser.message()->find("result")), kDeep - 1) << "the innermost is empty";
  EXPECT_EQ(parse(parser, document.substr(0, document.size() / 2)), 0);
  EXPECT_EQ(parser.message(), nullptr);
}

}  // namespace
}  // namespace qvn::test
