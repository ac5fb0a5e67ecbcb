// Counts what the calling thread takes from the heap.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

namespace qvn::bench {

// Puts what is taken while it lives into the benchmark's counter "allocations", per iteration.
class AllocationCounter {
 public:
  explicit AllocationCounter(benchmark::State& state);
  ~AllocationCounter();
  AllocationCounter(const AllocationCounter&) = delete;
  AllocationCounter& operator=(const AllocationCounter&) = delete;

 private:
  benchmark::State& state_;
  const std::uint64_t before_;
};

}  // namespace qvn::bench
