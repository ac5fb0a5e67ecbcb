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

TEST(ReceivedMessages, AreWhatTheirDocumentsSay) {
  const auto with = [](const std::string& root) { return kDeclaration + "<" + root + "/>"; };
  using Type = MessageType;
  const struct {
    std::string document;
    MessageType type;
    std::uint32_t requestId;
    std::string text;     // the result as classifyMessage gives it
    std::int32_t number;  // and as responseResult does
  } cases[] = {
      {response("<IntegerElem>7</IntegerElem>"), Type::Response, 42, "7", 7},
      {response("<IntegerElem>-1</IntegerElem>"), Type::Response, 42, "-1", -1},
      {response("<DoubleElem>0.1</DoubleElem>"), Type::Response, 42, "0.100000", 0},
      {response("<StringElem>0012</StringElem>"), Type::Response, 42, "0012", 10},
      {response("<StringElem>yes</StringElem>"), Type::Response, 42, "yes", 1},
      {response("<StringElem>job</StringElem>"), Type::Response, 42, "job", kUnreadableResult},
      {response("<BooleanElem>true</BooleanElem>"), Type::Response, 42, "true", 1},
      {response("<NullElem/>"), Type::Response, 42, "", kUnreadableResult},
      {response("<ListElem/>"), Type::Response, 42, "", kUnreadableResult},
      {response(""), Type::Response, 42, "", kNoResult},
      {with("response requestID=\"4294967295\""), Type::Response, 4294967295, "", kNoResult},
      {with("response requestID=\"4294967298\""), Type::Response, 2, "", kNoResult},
      {with("response requestID=\" +12x\""), Type::Response, 12, "", kNoResult},
      {with("response requestID=\"-2147483648\""), Type::Response, 2147483648, "", kNoResult},
      {with("response"), Type::Response, 0, "", kNoResult},
      {with("exception requestID=\"9\""), Type::Exception, 9, "", kExceptionResult},
      {with("method name=\"event\" requestID=\"9\""), Type::Method, 0, "", kUnreadableResult},
      {response("<IntegerElem>x</IntegerElem>"), Type::Unreadable, 0, "", kUnreadableResult},
      {"", Type::Unreadable, 0, "", kUnreadableResult},
      {"no document", Type::Unreadable, 0, "", kUnreadableResult},
      {" " + response(""), Type::Unreadable, 0, "", kUnreadableResult},
      {"<response requestID=\"42\"/>", Type::Unreadable, 0, "", kNoResult},
      {kDeclaration, Type::Unreadable, 0, "", kUnreadableResult},
      {with("ListElem"), Type::Unreadable, 0, "", kUnreadableResult},
      {kDeclaration + "<response>", Type::Unreadable, 0, "", kUnreadableResult},
      {kDeclaration + "<response></method>", Type::Unreadable, 0, "", kUnreadableResult},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.document);
    const ReceivedMessage message = classifyMessage(c.document);
    EXPECT_EQ(message.type, c.type);
    EXPECT_EQ(message.requestId, c.requestId);
    EXPECT_EQ(message.result, c.text);
    EXPECT_EQ(responseResult(c.document), c.number);
  }
}

TEST(ClassifyMessage, ReadsUpTo10000Bytes) {
  const std::string document = response("");
  const std::string fill(10'000 - document.size(), ' ');
  EXPECT_EQ(classifyMessage(document + fill).type, MessageType::Response);
  EXPECT_EQ(classifyMessage(document + fill + " ").type, MessageType::Unreadable);
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
