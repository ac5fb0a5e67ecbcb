#include <benchmark/benchmark.h>

#include "workloads.h"

namespace {

using qvn::bench::DataWorkload;

void append(benchmark::State& state) {
  DataWorkload workload(static_cast<std::uint32_t>(state.range(0)));
  for (auto _ : state) workload.append();
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(append)->Arg(64)->Arg(4096);

void appendAndConsume(benchmark::State& state) {
  DataWorkload workload(static_cast<std::uint32_t>(state.range(0)));
  for (auto _ : state) {
    workload.append();
    workload.consume();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(appendAndConsume)->Arg(64)->Arg(4096);

void copy(benchmark::State& state) {
  const qvn::Data original(static_cast<std::uint32_t>(state.range(0)), 0xFF);
  for (auto _ : state) benchmark::DoNotOptimize(qvn::Data(original));
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(copy)->Arg(64)->Arg(65536)->Arg(1 << 20);

}  // namespace
