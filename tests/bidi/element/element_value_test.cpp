#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "bidi/element/binary_elem.h"
#include "bidi/element/boolean_elem.h"
#include "bidi/element/double_elem.h"
#include "bidi/element/element_helpers.h"
#include "bidi/element/integer_elem.h"
#include "bidi/element/list_elem.h"
#include "bidi/element/map_elem.h"
#include "bidi/element/null_elem.h"
#include "bidi/element/string_elem.h"
#include "bidi/element/string_to_i.h"

namespace qvn::test {
namespace {

TEST(DataElems, ReadAsOtherTypesWhatTheyCan) {
  struct ValueCase {
    std::shared_ptr<Element> element;
    std::string text, number, boolean;  // what the values give, or their failures
    std::string description;
  };
  const double huge = 1e300;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const ValueCase cases[] = {
      {std::make_shared<IntegerElem>(-7), "-7", "-7", "1", ": -7"},
      {std::make_shared<IntegerElem>(0), "0", "0", "0", ": 0"},
      {std::make_shared<DoubleElem>(0.1), "0.100000", "0", "1", ": 0.100000"},
      {std::make_shared<DoubleElem>(2.9), "2.900000", "2", "1", ": 2.900000"},
      {std::make_shared<DoubleElem>(-2.9), "-2.900000", "-2", "1", ": -2.900000"},
      {std::make_shared<DoubleElem>(0.0), "0.000000", "0", "0", ": 0.000000"},
      {std::make_shared<DoubleElem>(123456789.0), "123456792.000000", "123456789", "1", ": 123456792.000000"},
      {std::make_shared<DoubleElem>(huge), "inf", "2147483647", "1", ": inf"},
      {std::make_shared<DoubleElem>(-huge), "-inf", "-2147483648", "1", ": -inf"},
      {std::make_shared<DoubleElem>(nan), "nan", "0", "1", ": nan"},
      {std::make_shared<StringElem>("42"), "42", "42", "0", ": 42"},
      {std::make_shared<StringElem>("YES"), "YES", "1", "1", ": YES"},
      {std::make_shared<StringElem>("True"), "True", "1", "1", ": True"},
      {std::make_shared<StringElem>("y"), "y", "1", "1", ": y"},
      {std::make_shared<StringElem>("No"), "No", "0", "0", ": No"},
      {std::make_shared<StringElem>("FALSE"), "FALSE", "0", "0", ": FALSE"},
      {std::make_shared<StringElem>("n"), "n", "0", "0", ": n"},
      {std::make_shared<StringElem>("maybe"), "maybe", "StringElem::intValue: convert to integermaybe", "0",
       ": maybe"},
      {std::make_shared<StringElem>(""), "", "0", "0", ": "},
      {std::make_shared<BooleanElem>(true), "true", "1", "1", ": true"},
      {std::make_shared<BooleanElem>("Yes"), "true", "1", "1", ": true"},
      {std::make_shared<BooleanElem>("Y"), "true", "1", "1", ": true"},
      {std::make_shared<BooleanElem>("tRUE"), "true", "1", "1", ": true"},
      {std::make_shared<BooleanElem>("1"), "false", "0", "0", ": false"},
      {std::make_shared<BooleanElem>(std::string_view("true ")), "false", "0", "0", ": false"},
      {std::make_shared<BinaryElem>(std::vector<std::uint8_t>{1}), "BinaryElem::stringValue: not supported",
       "BinaryElem::intValue: not supported", "BinaryElem::booleanValue: not supported", "BinaryElem"},
      {std::make_shared<NullElem>(), "", "NullElem::intValue: not supported", "0", ":NULL"},
  };
  const auto result = [](const auto& value) {
    std::string text;
    const std::string failure = failureOf([&] { text = value(); });
    return failure == "no failure" ? text : failure;
  };
  for (const ValueCase& c : cases) {
    const std::shared_ptr<Element> clone = c.element->clone();
    const std::shared_ptr<Element> duplicate = c.element->duplicate();
    for (const auto& element : {c.element, clone, duplicate}) {
      SCOPED_TRACE(c.description);
      EXPECT_EQ(result([&] { return element->stringValue(); }), c.text);
      EXPECT_EQ(result([&] { return std::to_string(element->intValue()); }), c.number);
      EXPECT_EQ(result([&] { return std::to_string(element->booleanValue()); }), c.boolean);
      EXPECT_EQ(element->describe(), c.description);
      EXPECT_EQ(failureOf([&] { element->objectValue(); }), "Element::objectValue: not supported");
    }
  }
}

TEST(DataElems, ABinaryHoldsItsOwnBytes) {
  std::vector<std::uint8_t> bytes = {1, 2, 3};
  const BinaryElem element(bytes.data(), 3);
  const std::unique_ptr<Element> copy = element.clone();
  bytes[0] = 9;
  for (const Element* holder :
       {static_cast<const Element*>(&element), static_cast<const Element*>(copy.get())}) {
    ASSERT_EQ(holder->binaryLength(), 3u);
    EXPECT_EQ(holder->binaryValue()[0], 1);
  }
  EXPECT_NE(element.binaryValue(), copy->binaryValue());

  const BinaryElem nothing(nullptr, 5);
  EXPECT_EQ(nothing.binaryLength(), 0u);
  EXPECT_EQ(nothing.binaryValue(), nullptr);
  EXPECT_EQ(failureOf([] { IntegerElem(1).binaryValue(); }), "Element::binaryValue: not supported");
  EXPECT_EQ(failureOf([] { IntegerElem(1).binaryLength(); }), "Element::binaryLength: not supported");
}

TEST(DataElems, HaveNoChildren) {
  MapElem map;
  map.addChild("n", std::make_unique<IntegerElem>(1));
  Element& element = *map.getChild("n");
  NullElem other;
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"getChildRaw(0)", [&] { element.getChildRaw(0); }},
      {"getChildRaw(a)", [&] { element.getChildRaw("a"); }},
      {"addChild(1)", [&] { element.addChild(1, &other); }},
      {"addChild(b)", [&] { element.addChild("b", nullptr); }},
      {"setChild(1)", [&] { element.setChild(1, &other); }},
      {"setChild(a)", [&] { element.setChild("a", &other); }},
      {"removeChild(1)", [&] { element.removeChild(1); }},
      {"removeChild(a)", [&] { element.removeChild("a"); }},
      {"iterator()", [&] { element.iterator(); }},
      {"removeChildren()", [&] { static_cast<void>(element.removeChildren()); }},
      {"getNumChildren()", [&] { element.getNumChildren(); }},
  };
  for (const auto& [call, action] : cases) {
    EXPECT_EQ(failureOf(action), std::string("TerminalElem::") + call + " not supported on .n [87]");
  }
  EXPECT_EQ(other.getParent(), nullptr);
}

TEST(Elements, KnowTheirClassAndItsBases) {
  const auto classesOf = [](const Element& element) {
    std::string classes;
    for (const char* name :
         {"ListElem", "MapElem", "IntegerElem", "DoubleElem", "StringElem", "BooleanElem", "BinaryElem",
          "NullElem", "DataElem", "NonterminalElem", "TerminalElem", "Element", "ElementList", ""}) {
      if (element.isInstanceOf(name)) classes += std::string(name) + " ";
    }
    return classes;
  };
  const std::string data = " DataElem TerminalElem Element ";
  EXPECT_EQ(classesOf(ListElem()), "ListElem NonterminalElem Element ");
  EXPECT_EQ(classesOf(MapElem()), "MapElem NonterminalElem Element ");
  EXPECT_EQ(classesOf(IntegerElem(1)), "IntegerElem" + data);
  EXPECT_EQ(classesOf(DoubleElem(1)), "DoubleElem" + data);
  EXPECT_EQ(classesOf(StringElem("")), "StringElem" + data);
  EXPECT_EQ(classesOf(BooleanElem(true)), "BooleanElem" + data);
  EXPECT_EQ(classesOf(BinaryElem(nullptr, 0)), "BinaryElem" + data);
  EXPECT_EQ(classesOf(NullElem()), "NullElem" + data);
}

TEST(StringToi, ReadsLiteralsAsElementsHoldThem) {
  const std::pair<const char*, std::int32_t> numbers[] = {{"42", 42},
                                                          {"-42", -42},
                                                          {"+7", 7},
                                                          {" 42", 42},
                                                          {"0", 0},
                                                          {"00", 0},
                                                          {"012", 12},
                                                          {"0012", 10},
                                                          {"00x1F", 31},
                                                          {"#1F", 31},
                                                          {"#1f", 31},
                                                          {"#FFFFFFFF", -1},
                                                          {"#-1", -1},
                                                          {"-0x10", -16},
                                                          {"", 0},
                                                          {"#", 0},
                                                          {"2147483647", 2147483647},
                                                          {"2147483648", -2147483647 - 1},
                                                          {"4294967298", 2}};
  for (const auto& [text, value] : numbers) EXPECT_EQ(StringToi(text), value) << text;

  for (const std::string text : {"12ab", "0x1F", "0o17", "1.5", "42 ", " ", "-", "#G", "yes", "08x"}) {
    EXPECT_EQ(failureOf([&] { StringToi(text); }), "StringToi: illegal format: " + text);
  }
  EXPECT_EQ(failureOf([] { StringToi(std::string_view("1\0002", 3)); }),
            "StringToi: illegal format: " + std::string("1\0002", 3));
}

}  // namespace
}  // namespace qvn::test
