#include <benchmark/benchmark.h>

#include <memory>

#include "device/store/handle_table.h"
#include "parts/allocations.h"

namespace {

using namespace qvn;

struct Object {};
class Table final : public HandleTable<Object> {
 protected:
  std::uint32_t restore(std::uint32_t handle) override {
    add(handle, std::make_shared<Object>());
    return 0;
  }
};

// One among so many live objects.
void acquireAndRelease(benchmark::State& state) {
  const auto live = static_cast<std::uint32_t>(state.range(0));
  Table table;
  for (std::uint32_t handle = 0; handle < live; ++handle) table.acquire(handle);
  const bench::AllocationCounter allocations(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(table.acquire(live / 2));
    table.release(live / 2);
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(acquireAndRelease)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Complexity(benchmark::o1);

}  // namespace
