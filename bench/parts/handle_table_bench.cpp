#include <benchmark/benchmark.h>

#include "workloads.h"

namespace {

void acquireAndRelease(benchmark::State& state) {
  qvn::bench::HandleWorkload workload(static_cast<std::uint32_t>(state.range(0)));
  for (auto _ : state) workload.run();
}
BENCHMARK(acquireAndRelease)->Arg(1)->Arg(10)->Arg(1000);

}  // namespace
