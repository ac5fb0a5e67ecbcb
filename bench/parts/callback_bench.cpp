#include <benchmark/benchmark.h>

#include <string>

#include "common/clients/callback_registry.h"
#include "device/client_registration.h"
#include "parts/allocations.h"

namespace {

using namespace qvn;

constexpr std::uint32_t kScanner = 401;

// A block of a page on its way to so many clients that throw it away.
void deliver(benchmark::State& state) {
  CallbackRegistry<AsyncDataRegistration> clients({.order = CallbackRules::Order::AsAdded});
  for (std::uint32_t id = 1; id <= static_cast<std::uint32_t>(state.range(0)); ++id) {
    clients.add(kScanner, {.clientId = id});
  }
  const bench::AllocationCounter allocations(state);
  for (auto _ : state) {
    clients.callEach(
        kScanner, [](const AsyncDataRegistration&) { return true; },
        [](const AsyncDataRegistration& client) { benchmark::DoNotOptimize(client.clientId); },
        [&](const AsyncDataRegistration&, const std::string& thrown) {
          state.SkipWithError(thrown.c_str());
        });
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(deliver)->RangeMultiplier(4)->Range(1, 64)->Complexity(benchmark::oN);

}  // namespace
