#include <benchmark/benchmark.h>

#include <string>

#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace {

using namespace qvn;

// An attribute text of a printer as the stores hold it, with that many bytes in front of what is read.
std::string printerText(std::size_t padding) {
  std::string text;
  AttributeCodec::setString(text, attribute::kAddress, std::string(padding, 'a'));
  AttributeCodec::setString(text, attribute::kDevice, "CpdPrinter");
  AttributeCodec::setLong(text, attribute::kHandle, 40001);
  AttributeCodec::setString(text, attribute::kTransport, "IPv4");
  return text;
}

void getLong(benchmark::State& state) {
  const std::string text = printerText(static_cast<std::size_t>(state.range(0)));
  std::uint32_t value = 0;
  for (auto _ : state) benchmark::DoNotOptimize(AttributeCodec::getLong(text, attribute::kHandle, value));
}
BENCHMARK(getLong)->Arg(16)->Arg(1536);

void setLong(benchmark::State& state) {
  std::string text = printerText(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(AttributeCodec::setLong(text, attribute::kHandle, 7));
}
BENCHMARK(setLong)->Arg(16)->Arg(1536);

}  // namespace
