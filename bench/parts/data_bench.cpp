#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "parts/allocations.h"
#include "qvn/transport/data.h"

namespace {

using namespace qvn;

constexpr std::uint32_t kPieceSize = 512;

void appendPieces(Data& data, benchmark::IterationCount pieces) {
  static const std::vector<std::uint8_t> piece(kPieceSize, 'd');
  for (; pieces > 0; --pieces) data.append(piece.data(), kPieceSize);
}

// A buffer that grows piece by piece, from nothing.
void append(benchmark::State& state) {
  const bench::AllocationCounter allocations(state);
  for (auto _ : state) {
    Data data;
    appendPieces(data, state.range(0));
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(append)->RangeMultiplier(8)->Range(8, 4096)->Complexity(benchmark::oN);

// One that has had the room before, and is emptied piece by piece.
void appendAndConsume(benchmark::State& state) {
  Data data;
  appendPieces(data, state.range(0));
  const bench::AllocationCounter allocations(state);
  for (auto _ : state) {
    data.reset();
    appendPieces(data, state.range(0));
    while (data.getLength() != 0) data.consume(kPieceSize, false);
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(appendAndConsume)->RangeMultiplier(8)->Range(8, 4096)->Complexity(benchmark::oN);

void copy(benchmark::State& state) {
  const Data original(static_cast<std::uint32_t>(state.range(0)), 0xFF);
  for (auto _ : state) benchmark::DoNotOptimize(Data(original));
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(copy)->Arg(64)->Arg(65536)->Arg(1 << 20);

}  // namespace
