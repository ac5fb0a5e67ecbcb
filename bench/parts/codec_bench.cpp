#include <benchmark/benchmark.h>
#include <expat.h>

#include <memory>
#include <string>
#include <vector>

#include "bidi/element/base64.h"
#include "bidi/element/integer_elem.h"
#include "bidi/element/list_elem.h"
#include "bidi/element/map_elem.h"
#include "bidi/element/string_elem.h"
#include "bidi/xml/xml_message_parser.h"
#include "bidi/xml/xml_visitor.h"
#include "parts/allocations.h"

namespace {

using namespace qvn;

constexpr int kFewest = 8;
constexpr int kMost = 4096;

// A scan job's parameters, as often as asked for.
std::unique_ptr<Element> parameters(benchmark::IterationCount count) {
  auto list = std::make_unique<ListElem>();
  for (std::uint32_t i = 0; i < count; ++i) {
    auto map = std::make_unique<MapElem>();
    map->addChild("resolution", std::make_unique<IntegerElem>(600));
    map->addChild("source", std::make_unique<StringElem>("Flatbed"));
    list->addChild(i, std::move(map));
  }
  return list;
}

std::string written(const Element& element) {
  XMLVisitor document(MethodKind::CallMethod, 1000, "jobFactory", "create");
  element.accept(document);
  return document.finish();
}

void finish(benchmark::State& state, const std::string& document) {
  state.SetBytesProcessed(state.iterations() * static_cast<benchmark::IterationCount>(document.size()));
  state.SetComplexityN(state.range(0));
}

// Into a tree, which is destroyed.
void readDocument(benchmark::State& state) {
  const std::string document = written(*parameters(state.range(0)));
  const bench::AllocationCounter allocations(state);
  for (auto _ : state) {
    XMLMessageParser parser;
    if (parser.parse(document.data(), static_cast<std::uint32_t>(document.size())) != 0) {
      state.SkipWithError("the document cannot be read");
    }
  }
  finish(state, document);
}
BENCHMARK(readDocument)->RangeMultiplier(8)->Range(kFewest, kMost)->Complexity(benchmark::oN);

// The part of that which is the XML parser's.
void readWithExpatAlone(benchmark::State& state) {
  const std::string document = written(*parameters(state.range(0)));
  for (auto _ : state) {
    const XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetElementHandler(
        parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
    const auto status = XML_Parse(parser, document.data(), static_cast<int>(document.size()), XML_FALSE);
    XML_ParserFree(parser);
    if (status != XML_STATUS_OK) state.SkipWithError("the document cannot be read");
  }
  finish(state, document);
}
BENCHMARK(readWithExpatAlone)->RangeMultiplier(8)->Range(kFewest, kMost)->Complexity(benchmark::oN);

void writeDocument(benchmark::State& state) {
  const std::unique_ptr<Element> element = parameters(state.range(0));
  const bench::AllocationCounter allocations(state);
  for (auto _ : state) benchmark::DoNotOptimize(written(*element));
  finish(state, written(*element));
}
BENCHMARK(writeDocument)->RangeMultiplier(8)->Range(kFewest, kMost)->Complexity(benchmark::oN);

void copyAndDestroyTree(benchmark::State& state) {
  const std::unique_ptr<Element> element = parameters(state.range(0));
  const bench::AllocationCounter allocations(state);
  for (auto _ : state) benchmark::DoNotOptimize(element->clone());
  state.SetComplexityN(state.range(0));
}
BENCHMARK(copyAndDestroyTree)->RangeMultiplier(8)->Range(kFewest, kMost)->Complexity(benchmark::oN);

std::vector<std::uint8_t> picture() {
  std::vector<std::uint8_t> bytes(std::size_t{1} << 20);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 2654435761u >> 13);
  return bytes;
}

void encodeBase64(benchmark::State& state) {
  const std::vector<std::uint8_t> bytes = picture();
  for (auto _ : state) benchmark::DoNotOptimize(qvn::encodeBase64(bytes));
  state.SetBytesProcessed(state.iterations() * static_cast<benchmark::IterationCount>(bytes.size()));
}
BENCHMARK(encodeBase64);

void decodeBase64(benchmark::State& state) {
  const std::string text = qvn::encodeBase64(picture());
  for (auto _ : state) benchmark::DoNotOptimize(qvn::decodeBase64(text, text.size()));
  state.SetBytesProcessed(state.iterations() * static_cast<benchmark::IterationCount>(text.size()));
}
BENCHMARK(decodeBase64);

}  // namespace
