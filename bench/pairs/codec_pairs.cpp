// Message documents read and written, against the XML parser and the base64 of others, and how their cost
// grows.
#include <expat.h>
#include <openssl/evp.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bidi/element/base64.h"
#include "bidi/element/integer_elem.h"
#include "bidi/element/list_elem.h"
#include "bidi/element/map_elem.h"
#include "bidi/element/string_elem.h"
#include "bidi/object_store/received_message.h"
#include "bidi/xml/xml_message_parser.h"
#include "bidi/xml/xml_visitor.h"
#include "measure.h"
#include "pairs/pairs.h"

namespace qvn::bench {
namespace {

constexpr int kRounds = 101;
// One document each: short enough to be seldom interrupted.
constexpr int kDocuments = 1001;
constexpr std::size_t kBinaryLength = std::size_t{1} << 20;
// As in the other rows of growth: anything worse than linear would make hundreds.
constexpr double kLinear = 2;

// The compiler must not do without the object.
template <typename Object>
void keep(const Object& object) {
  asm volatile("" : : "r"(&object) : "memory");
}

// A scan job's parameters, as often as asked for.
std::unique_ptr<Element> parameters(std::uint32_t count) {
  auto list = std::make_unique<ListElem>();
  for (std::uint32_t i = 0; i < count; ++i) {
    auto map = std::make_unique<MapElem>();
    map->addChild("resolution", std::make_unique<IntegerElem>(600));
    map->addChild("source", std::make_unique<StringElem>("Flatbed"));
    list->addChild(i, std::move(map));
  }
  return list;
}

std::unique_ptr<Element> numbers(std::uint32_t count) {
  auto list = std::make_unique<ListElem>();
  for (std::uint32_t i = 0; i < count; ++i) list->addChild(i, std::make_unique<IntegerElem>(1000));
  return list;
}

std::string written(const Element& element) {
  XMLVisitor document(MethodKind::CallMethod, 1000, "jobFactory", "create");
  element.accept(document);
  return document.finish();
}

std::unique_ptr<MapElem> readTree(const std::string& document) {
  XMLMessageParser parser;
  const int rc = parser.parse(document.data(), static_cast<std::uint32_t>(document.size()));
  require(static_cast<std::uint32_t>(rc), "reading a document");
  return parser.takeMessage();
}

void readWithExpatAlone(const std::string& document) {
  const XML_Parser parser = XML_ParserCreate(nullptr);
  XML_SetElementHandler(
      parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
  XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
  const auto status = XML_Parse(parser, document.data(), static_cast<int>(document.size()), XML_FALSE);
  XML_ParserFree(parser);
  require(status == XML_STATUS_OK ? 0 : 1, "Expat");
}

// The time of a in times of b.
template <typename A, typename B>
double ratio(A&& a, B&& b) {
  return medianRatio(
      kDocuments, [&] { return timeOf(a); }, [&] { return timeOf(b); });
}

void measureDocuments(RatioTable& table) {
  // The largest of these that is not above the limit for classification.
  std::unique_ptr<Element> element;
  std::string document;
  for (std::uint32_t count = 1;; ++count) {
    std::unique_ptr<Element> larger = parameters(count);
    std::string text = written(*larger);
    if (text.size() > 10'000) break;
    element = std::move(larger);
    document = std::move(text);
  }
  const auto read = [&] { keep(readTree(document)); };
  table.atLeast("codec: 10 KB read into a tree / Expat alone, throughput",
                ratio([&] { readWithExpatAlone(document); }, read), 0.4);
  table.atLeast("codec: a tree written as 10 KB / read from it, throughput",
                ratio(read, [&] { keep(written(*element)); }), 1);
  std::string response = document;
  for (std::size_t at = 0; (at = response.find("method", at)) != std::string::npos;) {
    response.replace(at, std::strlen("method"), "response");
  }
  if (classifyMessage(response).type != MessageType::Response) throw std::runtime_error("classification");
  table.atMost("codec: a response of 10 KB classified / read",
               ratio([&] { keep(classifyMessage(response)); }, [&] { keep(readTree(response)); }), 1.3);
}

void measureBase64(RatioTable& table) {
  std::vector<std::uint8_t> bytes(kBinaryLength / 3 * 3);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 2654435761u >> 13);
  const std::string text = encodeBase64(bytes);
  if (decodeBase64(text, text.size()) != bytes) throw std::runtime_error("base64");
  // As ours do, into memory of their own.
  const auto encodeWithOpenssl = [&] {
    std::string out(bytes.size() / 3 * 4 + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(out.data()), bytes.data(),
                    static_cast<int>(bytes.size()));
    keep(out);
  };
  const auto decodeWithOpenssl = [&] {
    std::vector<std::uint8_t> out(text.size() / 4 * 3);
    EVP_DecodeBlock(out.data(), reinterpret_cast<const unsigned char*>(text.data()),
                    static_cast<int>(text.size()));
    keep(out);
  };
  table.atLeast("codec: base64 of 1 MiB encoded / OpenSSL, throughput",
                medianRatio(
                    kRounds, [&] { return timeOf(encodeWithOpenssl); },
                    [&] { return timeOf([&] { keep(encodeBase64(bytes)); }); }),
                0.5);
  table.atLeast("codec: base64 of 1 MiB decoded / OpenSSL, throughput",
                medianRatio(
                    kRounds, [&] { return timeOf(decodeWithOpenssl); },
                    [&] { return timeOf([&] { keep(decodeBase64(text, text.size())); }); }),
                0.5);
}

// The action's time per element, among many elements against among few.
template <typename Action>
double growth(Action action) {
  constexpr std::uint32_t kFew = 10;
  constexpr std::uint32_t kMany = 10'000;
  return medianRatio(
      kRounds, [&] { return action(kMany, 1) / kMany; },
      [&] { return action(kFew, kMany / kFew) / kFew / (kMany / kFew); });
}

void measureGrowth(RatioTable& table) {
  table.atMost("codec: one of 10,000 elements read / one of 10",
               growth([](std::uint32_t count, std::uint32_t runs) {
                 const std::string document = written(*numbers(count));
                 return timeOf(runs, [&] { keep(readTree(document)); });
               }),
               kLinear);
  table.atMost("codec: one of 10,000 elements copied / one of 10",
               growth([](std::uint32_t count, std::uint32_t runs) {
                 const std::unique_ptr<Element> element = numbers(count);
                 return timeOf(runs, [&] { keep(element->clone()); });
               }),
               kLinear);
  table.atMost("codec: one of 10,000 elements destroyed / one of 10",
               growth([](std::uint32_t count, std::uint32_t runs) {
                 std::vector<std::unique_ptr<Element>> elements(runs);
                 for (auto& element : elements) element = numbers(count);
                 return timeOf([&] { elements.clear(); });
               }),
               kLinear);
}

}  // namespace

void measureCodec(RatioTable& table) {
  measureDocuments(table);
  measureBase64(table);
  measureGrowth(table);
}

}  // namespace qvn::bench
