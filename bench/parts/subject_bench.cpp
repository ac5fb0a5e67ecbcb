#include <benchmark/benchmark.h>

#include "workloads.h"

namespace {

void notify(benchmark::State& state) {
  qvn::bench::NotifyWorkload workload(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) workload.run();
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(notify)->Arg(1)->Arg(10)->Arg(1000)->Complexity(benchmark::oN);

}  // namespace
