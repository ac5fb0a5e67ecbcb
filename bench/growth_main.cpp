// How the costs of the library's inner parts grow, and what they take from the heap. Prints the table and
// adds it to the file that the argument names.
#include "allocations.h"
#include "measure.h"
#include "ratio_table.h"
#include "workloads.h"

namespace qvn::bench {
namespace {

constexpr int kRounds = 101;
// Linear growth makes a ratio of 1, and a larger set that no longer fits the caches adds to it; anything
// worse than linear would make tens.
constexpr double kLinear = 2;

double asNumber(std::uint64_t count) { return static_cast<double>(count); }

void measureNotify(RatioTable& table) {
  NotifyWorkload one(1);
  NotifyWorkload ten(10);
  NotifyWorkload thousand(1000);
  const auto tenPerObserver = [&] { return timeOf(1000, [&] { ten.run(); }) / 10; };
  table.atMost("notify: one of 1000 observers / one of 10",
               medianRatio(
                   kRounds, [&] { return timeOf(10, [&] { thousand.run(); }) / 10; }, tenPerObserver),
               kLinear);
  table.atMost("notify: one of 10 observers / the only one",
               medianRatio(kRounds, tenPerObserver, [&] { return timeOf(1000, [&] { one.run(); }); }),
               kLinear);
  NotifyWorkload few(8);
  few.run();
  table.atMost("notify: allocations for 8 observers", asNumber(allocationsOf([&] { few.run(); })), 0);
  table.atMost("notify: allocations for 1000 observers", asNumber(allocationsOf([&] { thousand.run(); })), 1);
}

void measureHandles(RatioTable& table) {
  HandleWorkload one(1);
  HandleWorkload thousand(1000);
  table.atMost("acquire and release: of 1000 live handles / of one",
               medianRatio(
                   kRounds, [&] { return timeOf(5000, [&] { thousand.run(); }); },
                   [&] { return timeOf(5000, [&] { one.run(); }); }),
               kLinear);
  table.atMost("acquire and release: allocations", asNumber(allocationsOf([&] { thousand.run(); })), 0);
}

void measureData(RatioTable& table) {
  constexpr std::uint32_t kFew = 64;
  constexpr std::uint32_t kMany = 4096;
  DataWorkload few(kFew);
  DataWorkload many(kMany);
  table.atMost("Data: one of 4096 pieces appended / one of 64",
               medianRatio(
                   kRounds, [&] { return timeOf([&] { many.append(); }) / kMany; },
                   [&] { return timeOf(64, [&] { few.append(); }) / 64 / kFew; }),
               kLinear);
  const auto consume = [](DataWorkload& data, std::uint32_t pieces) {
    data.append();
    return timeOf([&] { data.consume(); }) / pieces;
  };
  table.atMost("Data: one of 4096 pieces consumed / one of 64",
               medianRatio(
                   kRounds, [&] { return consume(many, kMany); }, [&] { return consume(few, kFew); }),
               kLinear);
  many.append();
  table.atMost("Data: allocations while consuming", asNumber(allocationsOf([&] { many.consume(); })), 0);
  DataWorkload fresh(kMany);
  table.atMost("Data: allocations per piece appended",
               asNumber(allocationsOf([&] { fresh.append(); })) / kMany, 0.01);
}

void run(const char* file) {
  RatioTable table;
  measureNotify(table);
  measureHandles(table);
  measureData(table);
  table.print();
  table.appendTo(file);
}

}  // namespace
}  // namespace qvn::bench

int main(int argc, char** argv) { return qvn::bench::benchMain(argc, argv, qvn::bench::run); }
