// Values of an object store as JSON: there and back, and what no document can hold.
#include "shared/object-store/element_json.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "bidi/xml/xml_visitor.h"

namespace qvn::test {
namespace {

using object_store::parseElement;

TEST(ElementJson, GoesThereAndBack) {
  for (const char* text :
       {"7", "-2147483648", "0.5", "true", "null", R"("text")", "[]", "{}", R"([1,[2,{"a":null}]])",
        R"({"base64":"AP8="})", R"({"base64":"AP8=","more":1})", R"({"base64":7})"}) {
    EXPECT_EQ(object_store::toJson(*parseElement(text)).dump(), object_store::Json::parse(text).dump());
  }
}

TEST(ElementJson, MakesTheElementsThatDocumentsHave) {
  XMLVisitor document(MethodKind::CallMethod, 1000, "o", "m");
  parseElement(R"({"b":{"base64":"/w=="},"d":1.5,"i":-1,"l":[true,null],"s":"x"})")->accept(document);
  const std::string written = document.finish();
  for (const char* part :
       {"<BinaryElem>/w==</BinaryElem>", "<DoubleElem>1.500000</DoubleElem>", "<IntegerElem>-1</IntegerElem>",
        "<BooleanElem>true</BooleanElem>", "<NullElem/>", "<StringElem>x</StringElem>"}) {
    EXPECT_THAT(written, testing::HasSubstr(part));
  }
}

TEST(ElementJson, RefusesWhatNoDocumentCanHold) {
  for (const std::string& text :
       {std::string("2147483648"), std::string("18446744073709551615"), std::string("-2147483649"),
        std::string(R"("a<b")"), std::string(R"({"a>":1})"), std::string(R"({"base64":"A"})"),
        std::string(R"({"a\"b":1})"), std::string(R"({"_a":1})"), std::string(R"({"a\nb":1})"),
        std::string(R"("a\r")"), std::string(R"("\u0000")"), std::string(R"("\uFFFF")"), std::string("[1,"),
        std::string(), "{\"" + std::string(120, 'n') + "\":1}", std::string(100000, '[')}) {
    EXPECT_THROW(parseElement(text), std::invalid_argument) << text.substr(0, 50);
  }
  EXPECT_NO_THROW(parseElement(R"({"a_":"\"_\n\t\u007f"})"));
  EXPECT_NO_THROW(parseElement("{\"" + std::string(119, 'n') + "\":1}"));
}

}  // namespace
}  // namespace qvn::test
