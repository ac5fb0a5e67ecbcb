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

std::string argumentLine(const std::string& name, const std::string& text) {
  return "  <arg name=\"" + name + "\">" + text;
}

TEST(XMLVisitor, WritesEveryMethod) {
  const std::string end = "</arg>";
  const std::string null = "  <NullElem/>";
  const auto method = [&](const std::string& name, const std::string& first, const std::string& second) {
    return lines(
        {kDeclaration, methodTag(name, 7), argumentLine(first, "a" + end), argumentLine(second, "b" + end)});
  };
  const auto with = [&](const char* element) { return lines({argumentLine(element, ""), null, end}); };
  const std::string observed = argumentLine("observer", "c" + end) + "\r\n";
  const std::pair<MethodKind, std::string> cases[] = {
      {MethodKind::GetAttribute, method("getAttribute", "objName", "attribName")},
      {MethodKind::SetAttribute, method("setAttribute", "objName", "attribName") + with("value")},
      {MethodKind::CallMethod, method("callMethod", "objName", "method") + with("params")},
      {MethodKind::CallRule,
       lines({kDeclaration, methodTag("callRule", 7), argumentLine("ruleName", "a" + end),
              argumentLine("params", "b"), null, end})},
      {MethodKind::AddObserver, method("addObserver", "objName", "event") + observed},
      {MethodKind::RemoveObserver, method("removeObserver", "objName", "event") + observed},
      {MethodKind::Instantiate, method("instantiate", "className", "objName") + with("params")},
      {MethodKind::Event, lines({kDeclaration, "<method name=\"event\">", argumentLine("observer", "a" + end),
                                 argumentLine("objName", "b" + end), argumentLine("event", "c" + end),
                                 argumentLine("data", ""), "    <NullElem/>", "  </arg>"})},
      {MethodKind::CallVoidMethod, method("callVoidMethod", "objName", "method") + with("params")},
  };
  for (const auto& [kind, document] : cases) {
    XMLVisitor visitor(kind, 7, "a", "b", "c");
    if (document.find("NullElem") != std::string::npos) NullElem().accept(visitor);
    EXPECT_EQ(visitor.finish(), document + "</method>\r\n");
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

}  // namespace
}  // namespace qvn::test
