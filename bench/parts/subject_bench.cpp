#include <benchmark/benchmark.h>

#include <deque>

#include "parts/allocations.h"
#include "qvn/transport/data.h"
#include "qvn/transport/observer.h"
#include "qvn/transport/subject.h"

namespace {

using namespace qvn;

class Counter : public Observer {
 protected:
  using Observer::doUpdate;
  void doUpdate(Data&) override { ++updates_; }

 private:
  std::uint64_t updates_ = 0;
};

void notify(benchmark::State& state) {
  Subject subject;
  std::deque<Counter> observers(static_cast<std::size_t>(state.range(0)));
  for (Counter& observer : observers) observer.attachTo(subject);
  Data data("packet");
  {
    const bench::AllocationCounter allocations(state);
    for (auto _ : state) subject.notify(data);
  }
  for (Counter& observer : observers) observer.detachFrom(subject);
  state.SetComplexityN(state.range(0));
}
BENCHMARK(notify)->Arg(1)->Arg(8)->Arg(64)->Arg(1000)->Complexity(benchmark::oN);

}  // namespace
