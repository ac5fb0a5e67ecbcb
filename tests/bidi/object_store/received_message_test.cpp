#include "bidi/object_store/received_message.h"

#include <gtest/gtest.h>

#include <string>

#include "bidi/element/element_helpers.h"

namespace qvn::test {
namespace {

const std::string kDeclaration = "<?xml version=\"1.0\"?>";

std::string response(const std::string& content) {
  return kDeclaration + "<response requestID=\"42\">" + content + "</response>";
}

TEST(ClassifyMessage, TellsWhatADocumentIs) {
  struct Case {
    std::string document;
    MessageType type;
    std::uint32_t requestId;
    std::string result;
  };
  const Case cases[] = {
      {response("<IntegerElem>7</IntegerElem>"), MessageType::Response, 42, "7"},
      {response("<DoubleElem>0.1</DoubleElem>"), MessageType::Response, 42, "0.100000"},
      {response("<ListElem/>"), MessageType::Response, 42, ""},
      {response(""), MessageType::Response, 42, ""},
      {kDeclaration + "<response requestID=\"4294967295\"/>", MessageType::Response, 4294967295, ""},
      {kDeclaration + "<response requestID=\"4294967296\"/>", MessageType::Response, 4294967295, ""},
      {kDeclaration + "<response requestID=\"12x\"/>", MessageType::Response, 12, ""},
      {kDeclaration + "<response requestID=\"-1\"/>", MessageType::Response, 0, ""},
      {kDeclaration + "<response/>", MessageType::Response, 0, ""},
      {kDeclaration + "<exception requestID=\"9\"><message>m</message></exception>", MessageType::Exception,
       9, ""},
      {kDeclaration + "<method name=\"event\" requestID=\"9\"/>", MessageType::Method, 0, ""},
      {response("<IntegerElem>x</IntegerElem>"), MessageType::Unreadable, 0, ""},
      {"", MessageType::Unreadable, 0, ""},
      {" " + response(""), MessageType::Unreadable, 0, ""},
      {"<response requestID=\"42\"/>", MessageType::Unreadable, 0, ""},
      {kDeclaration, MessageType::Unreadable, 0, ""},
      {kDeclaration + "<ListElem/>", MessageType::Unreadable, 0, ""},
      {kDeclaration + "<response>", MessageType::Unreadable, 0, ""},
      {kDeclaration + "<response></method>", MessageType::Unreadable, 0, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.document);
    const ReceivedMessage message = classifyMessage(c.document);
    EXPECT_EQ(message.type, c.type);
    EXPECT_EQ(message.requestId, c.requestId);
    EXPECT_EQ(message.result, c.result);
  }
}

TEST(ClassifyMessage, ReadsUpTo10000Bytes) {
  const std::string document = response("");
  const std::string fill(10'000 - document.size(), ' ');
  EXPECT_EQ(classifyMessage(document + fill).type, MessageType::Response);
  EXPECT_EQ(classifyMessage(document + fill + " ").type, MessageType::Unreadable);
}

TEST(ResponseResult, IsTheNumberOrWhyThereIsNone) {
  const std::pair<std::string, std::int32_t> cases[] = {
      {response("<IntegerElem>-1</IntegerElem>"), -1},
      {response("<StringElem>0012</StringElem>"), 10},
      {response("<StringElem>yes</StringElem>"), 1},
      {response("<BooleanElem>true</BooleanElem>"), 1},
      {kDeclaration + "<exception requestID=\"42\"/>", kExceptionResult},
      {response(""), kNoResult},
      {response("<StringElem>job</StringElem>"), kUnreadableResult},
      {response("<NullElem/>"), kUnreadableResult},
      {response("<ListElem/>"), kUnreadableResult},
      {response("<IntegerElem>x</IntegerElem>"), kUnreadableResult},
      {kDeclaration + "<method name=\"event\"/>", kUnreadableResult},
      {"", kUnreadableResult},
      {"no document", kUnreadableResult},
  };
  for (const auto& [document, result] : cases) EXPECT_EQ(responseResult(document), result) << document;
}

TEST(ReadNotification, TakesItsTextsAndItsData) {
  const std::string begin = kDeclaration + "<method name=\"event\"><arg name=\"observer\">401_Observer</arg>";
  auto notification = readNotification(
      begin +
      "<arg name=\"objName\">job</arg><arg name=\"event\">stateChanged</arg><arg name=\"data\">"
      "<MapElem><child name=\"state\"><StringElem>Warming</StringElem></child></MapElem></arg>"
      "</method>");
  ASSERT_TRUE(notification && notification->data != nullptr);
  EXPECT_EQ(notification->observer, "401_Observer");
  EXPECT_EQ(notification->objName, "job");
  EXPECT_EQ(notification->event, "stateChanged");
  EXPECT_EQ(shown(*notification->data), "{state: Warming}");
  EXPECT_EQ(notification->data->getParent(), nullptr);

  notification = readNotification(begin + "<arg name=\"objName\"><ListElem/></arg></method>");
  ASSERT_TRUE(notification);
  EXPECT_EQ(notification->observer, "401_Observer");
  EXPECT_EQ(notification->objName, "") << "a list is no text";
  EXPECT_EQ(notification->event, "");
  EXPECT_EQ(notification->data, nullptr);

  for (const std::string& document :
       {begin, begin + "<arg name=\"n\"><IntegerElem>x</IntegerElem></arg></method>",
        begin + "</method>" + std::string(10'000, ' '), response(""), std::string()}) {
    EXPECT_FALSE(readNotification(document)) << document;
  }
}

}  // namespace
}  // namespace qvn::test
