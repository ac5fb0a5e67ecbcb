#include "bidi/xml/xml_visitor.h"

#include <gtest/gtest.h>

#include <locale>
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
#include "bidi/object_store/store_messages.h"

namespace qvn::test {
namespace {

// The lines, each ended as in a document.
std::string lines(std::initializer_list<std::string> all) {
  std::string text;
  for (const std::string& line : all) text += line + "\r\n";
  return text;
}

const std::string kDeclaration = "<?xml version=\"1.0\"?>";

std::string methodTag(const std::string& name, std::uint32_t id) {
  return "<method name=\"" + name + "\" requestID=\"" + std::to_string(static_cast<std::int32_t>(id)) + "\">";
}

TEST(XMLVisitor, WritesEveryMethod) {
  struct Case {
    MethodKind kind;
    std::string document;
  };
  const std::string null = "  <NullElem/>";
  const Case cases[] = {
      {MethodKind::GetAttribute,
       lines({kDeclaration, methodTag("getAttribute", 7), "  <arg name=\"objName\">a</arg>",
              "  <arg name=\"attribName\">b</arg>", "</method>"})},
      {MethodKind::SetAttribute,
       lines({kDeclaration, methodTag("setAttribute", 7), "  <arg name=\"objName\">a</arg>",
              "  <arg name=\"attribName\">b</arg>", "  <arg name=\"value\">", null, "</arg>", "</method>"})},
      {MethodKind::CallMethod,
       lines({kDeclaration, methodTag("callMethod", 7), "  <arg name=\"objName\">a</arg>",
              "  <arg name=\"method\">b</arg>", "  <arg name=\"params\">", null, "</arg>", "</method>"})},
      {MethodKind::CallRule,
       lines({kDeclaration, methodTag("callRule", 7), "  <arg name=\"ruleName\">a</arg>",
              "  <arg name=\"params\">b", null, "</arg>", "</method>"})},
      {MethodKind::AddObserver,
       lines({kDeclaration, methodTag("addObserver", 7), "  <arg name=\"objName\">a</arg>",
              "  <arg name=\"event\">b</arg>", "  <arg name=\"observer\">c</arg>", "</method>"})},
      {MethodKind::RemoveObserver,
       lines({kDeclaration, methodTag("removeObserver", 7), "  <arg name=\"objName\">a</arg>",
              "  <arg name=\"event\">b</arg>", "  <arg name=\"observer\">c</arg>", "</method>"})},
      {MethodKind::Instantiate,
       lines({kDeclaration, methodTag("instantiate", 7), "  <arg name=\"className\">a</arg>",
              "  <arg name=\"objName\">b</arg>", "  <arg name=\"params\">", null, "</arg>", "</method>"})},
      {MethodKind::Event, lines({kDeclaration, "<method name=\"event\">", "  <arg name=\"observer\">a</arg>",
                                 "  <arg name=\"objName\">b</arg>", "  <arg name=\"event\">c</arg>",
                                 "  <arg name=\"data\">", "    <NullElem/>", "  </arg>", "</method>"})},
      {MethodKind::CallVoidMethod,
       lines({kDeclaration, methodTag("callVoidMethod", 7), "  <arg name=\"objName\">a</arg>",
              "  <arg name=\"method\">b</arg>", "  <arg name=\"params\">", null, "</arg>", "</method>"})},
  };
  for (const Case& c : cases) {
    XMLVisitor visitor(c.kind, 7, "a", "b", "c");
    if (c.document.find("NullElem") != std::string::npos) NullElem().accept(visitor);
    EXPECT_EQ(visitor.finish(), c.document);
  }
  EXPECT_EQ(failureOf([] { XMLVisitor(static_cast<MethodKind>(2), 7, "", ""); }),
            "XMLVisitor: no method of kind 2 [87]");
}

// What stands between the params tag and its end.
std::string params(const Element& element) {
  XMLVisitor visitor(MethodKind::CallMethod, 1, "o", "m");
  element.accept(visitor);
  const std::string document = visitor.finish();
  const std::string before = "<arg name=\"params\">\r\n";
  const std::size_t begin = document.find(before) + before.size();
  return document.substr(begin, document.find("</arg>\r\n</method>") - begin);
}

TEST(XMLVisitor, WritesDataElements) {
  const std::pair<std::shared_ptr<Element>, std::string> cases[] = {
      {std::make_shared<IntegerElem>(-2147483647 - 1), "<IntegerElem>-2147483648</IntegerElem>"},
      {std::make_shared<DoubleElem>(0.1), "<DoubleElem>0.100000</DoubleElem>"},
      {std::make_shared<DoubleElem>(123456789.0), "<DoubleElem>123456789.000000</DoubleElem>"},
      {std::make_shared<BooleanElem>(false), "<BooleanElem>false</BooleanElem>"},
      {std::make_shared<StringElem>(""), "<StringElem></StringElem>"},
      {std::make_shared<StringElem>("a<b>&c"), "<StringElem>a<b>&c</StringElem>"},
      {std::make_shared<StringElem>("x", "utf-8"), "<StringElem  encoding=\"utf-8\">x</StringElem>"},
      {std::make_shared<BinaryElem>(std::vector<std::uint8_t>{0xFF}), "<BinaryElem>/w==</BinaryElem>"},
      {std::make_shared<BinaryElem>(nullptr, 0), "<BinaryElem></BinaryElem>"},
      {std::make_shared<NullElem>(), "<NullElem/>"},
  };
  for (const auto& [element, text] : cases) EXPECT_EQ(params(*element), lines({"  " + text}));
}

TEST(XMLVisitor, WritesContainersIndented) {
  MapElem map;
  map.addChild("_own", std::make_unique<IntegerElem>(1));
  map.addChild("z", std::make_unique<IntegerElem>(2));
  map.addChild("a", std::make_unique<ListElem>());
  map.addChild("_", std::make_unique<MapElem>());
  map.getChild("a")->addChild(0, std::make_unique<MapElem>());
  map.getChild("a")->addChild(1, std::make_unique<NullElem>());
  EXPECT_EQ(params(map), lines({"  <MapElem>", "    <child name=\"a\">", "      <ListElem>",
                                "        <MapElem>", "        </MapElem>", "        <NullElem/>",
                                "      </ListElem>", "    </child>", "    <child name=\"z\">",
                                "      <IntegerElem>2</IntegerElem>", "    </child>", "  </MapElem>"}));
}

TEST(XMLVisitor, WritesCompositesAndMessages) {
  MapElem root;
  root.setName("root");
  root.addChild("part", std::make_unique<MapElem>());
  auto& part = dynamic_cast<MapElem&>(*root.getChild("part"));
  part.addChild("n", std::make_unique<NullElem>());
  part.addChild("_n", std::make_unique<NullElem>());
  XMLVisitor visitor(MethodKind::GetAttribute, 1, "o", "a");
  visitor.visitComposite(part);
  visitor.visitMessage(Exception("it failed", 5, "", 0));
  EXPECT_EQ(visitor.finish(),
            lines({kDeclaration, methodTag("getAttribute", 1), "  <arg name=\"objName\">o</arg>",
                   "  <arg name=\"attribName\">a</arg>", "  <CompositeElem  enclosure=\"root\">",
                   "    <child name=\"n\">", "      <NullElem/>", "    </child>", "  </CompositeElem>",
                   "  <message>it failed</message>", "</method>"}));
}

TEST(XMLVisitor, RefusesNamesThatDoNotFit) {
  const auto child = [](std::size_t length, char first) {
    MapElem map;
    map.addChild(std::string(1, first) + std::string(length - 1, 'n'), std::make_unique<NullElem>());
    return failureOf([&] { params(map); });
  };
  EXPECT_EQ(child(119, 'n'), "no failure");
  EXPECT_EQ(child(120, 'n'), "XMLVisitor: child name of 120 bytes, at most 119 [87]");
  EXPECT_EQ(child(120, '_'), "no failure") << "it is not written";

  const auto encoding = [](std::size_t tagLength) {
    const std::size_t around = std::string("<StringElem  encoding=\"\">").size();
    const StringElem element("x", std::string(tagLength - around, 'e'));
    return failureOf([&] { params(element); });
  };
  EXPECT_EQ(encoding(383), "no failure");
  EXPECT_EQ(encoding(384), "XMLVisitor: tag of 384 bytes, at most 383 [87]");

  const std::string text(10'000, 'x');
  EXPECT_NE(params(StringElem(text)).find(text), std::string::npos) << "texts may have any length";
}

TEST(XMLVisitor, WritesDeepTreesUpToADocumentsLimit) {
  const std::size_t depth = 3000;
  const std::string text = params(*nest(depth, std::make_unique<NullElem>()));
  EXPECT_TRUE(text.starts_with("  <ListElem>\r\n    <ListElem>\r\n"));
  EXPECT_TRUE(text.ends_with("\r\n    </ListElem>\r\n  </ListElem>\r\n"));
  EXPECT_NE(text.find("\n" + std::string(2 * depth + 2, ' ') + "<NullElem/>\r\n"), std::string::npos);

  const std::unique_ptr<Element> deeper = nest(1'000'000, std::make_unique<NullElem>());
  EXPECT_EQ(failureOf([&] { params(*deeper); }), "XMLVisitor: document above 64 MiB [87]");
}

TEST(XMLVisitor, WritesNumbersAlikeInEveryLocale) {
  struct CommaDecimals : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
  };
  const std::locale previous = std::locale::global(std::locale(std::locale(), new CommaDecimals));
  const std::string text = params(DoubleElem(0.5));
  std::locale::global(previous);
  EXPECT_EQ(text, "  <DoubleElem>0.500000</DoubleElem>\r\n");
}

TEST(HasMarkup, FindsWhatWouldChangeADocument) {
  for (const char* text : {"<", "a>b", "x&", "&amp;"}) EXPECT_TRUE(hasMarkup(text)) << text;
  for (const char* text : {"", "job.1", "\"quoted\" 'text'"}) EXPECT_FALSE(hasMarkup(text)) << text;
}

TEST(StoreMessages, CallMethodWritesItsParams) {
  ListElem list;
  list.addChild(0, std::make_unique<StringElem>("ScanJob"));
  const StoreMessage message = callMethod("jobFactory", "create", &list);
  EXPECT_EQ(message.document,
            lines({kDeclaration, methodTag("callMethod", message.requestId),
                   "  <arg name=\"objName\">jobFactory</arg>", "  <arg name=\"method\">create</arg>",
                   "  <arg name=\"params\">", "  <ListElem>", "    <StringElem>ScanJob</StringElem>",
                   "  </ListElem>", "</arg>", "</method>"}));
  EXPECT_EQ(list.getNumChildren(), 1u) << "the params stay the caller's";

  const StoreMessage without = callMethod("job", "start", nullptr);
  EXPECT_EQ(without.requestId, message.requestId + 1);
  EXPECT_NE(without.document.find("  <arg name=\"params\">\r\n  <ListElem>\r\n  </ListElem>\r\n</arg>\r\n"),
            std::string::npos);
}

TEST(StoreMessages, ObserversAreAddedAndRemoved) {
  const StoreMessage added = addObserver("job", "stateChanged", "401_Observer");
  EXPECT_EQ(added.document,
            lines({kDeclaration, methodTag("addObserver", added.requestId),
                   "  <arg name=\"objName\">job</arg>", "  <arg name=\"event\">stateChanged</arg>",
                   "  <arg name=\"observer\">401_Observer</arg>", "</method>"}));
  const StoreMessage removed = removeObserver("job", "stateChanged", "401_Observer");
  EXPECT_EQ(removed.requestId, added.requestId + 1);
  EXPECT_NE(removed.document.find(methodTag("removeObserver", removed.requestId)), std::string::npos);
}

}  // namespace
}  // namespace qvn::test
