#include "parts/allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::uint64_t allocations = 0;

void* allocate(std::size_t size) {
  ++allocations;
  if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace qvn::bench {

AllocationCounter::AllocationCounter(benchmark::State& state) : state_(state), before_(allocations) {}

AllocationCounter::~AllocationCounter() {
  state_.counters["allocations"] =
      benchmark::Counter(static_cast<double>(allocations - before_), benchmark::Counter::kAvgIterations);
}

}  // namespace qvn::bench
