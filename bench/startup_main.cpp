// What the library costs a program that starts, many that run, and one that does nothing, all seen from
// outside. Prints the rows and adds them to the file that the argument names.
#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "installation.h"
#include "measure.h"
#include "ratio_table.h"
#include "startup/programs.h"

namespace qvn::bench {
namespace {

constexpr std::uint32_t kFirst = 1000;
constexpr std::uint32_t kStored = 10000;
constexpr std::size_t kTextSize = 512;

constexpr int kStartRounds = 101;
constexpr int kReadRounds = 11;
constexpr int kMemoryRounds = 11;

constexpr std::uint32_t kCalls = 20000;
constexpr int kFew = 2;
constexpr int kMany = 16;

using Command = std::vector<std::string>;

// A client that makes so many calls after its first one.
Command client(std::uint32_t calls) {
  return {QVN_STORED_READ, std::to_string(kFirst), std::to_string(kStored), std::to_string(calls)};
}

Command bareRead(const Installation& installation) {
  return {QVN_BARE_READ, (installation.home() / "registry.mdb").string(),
          R"(Software\Quorin Tools\Qvn\Local\qr__\PrinterStore)", std::to_string(kFirst + kStored / 2)};
}

// From before the program is started until it has what it was started for. Its end does not count.
Seconds startOf(const Command& command) {
  const std::uint64_t begin = nanosecondsNow();
  Programs program(command, 1);
  program.awaitAll();
  return static_cast<double>(nanosecondsNow() - begin) / 1e9;
}

// How long a client waits for a call when so many processes call all the time.
Seconds waitPerCall(int processes) {
  Programs clients(client(kCalls), processes);
  clients.awaitAll();
  return timeOf([&] {
           clients.go();
           clients.awaitAll();
         }) /
         kCalls;
}

// The processor time that the machine spends for one call of so many processes that call all the time, idle
// time of processors that could have been used included, against that of one. Waiting for processors alone,
// 16 processes on 2 of them cannot do better than 8 times as long as one; what this ratio shows is what they
// do to each other: spinning and sleeping for one another's locks, a lock's holder put to sleep, processors
// and caches changed.
double costOfReads(int processes) {
  const int processors =
      std::min(processes, static_cast<int>(std::max(1U, std::thread::hardware_concurrency())));
  std::vector<double> waits;
  std::vector<double> waitsOfOne;
  const double ratio = medianRatio(
      kReadRounds,
      [&] {
        waits.push_back(waitPerCall(processes));
        return waits.back() * processors / processes;
      },
      [&] {
        waitsOfOne.push_back(waitPerCall(1));
        return waitsOfOne.back();
      });
  std::fprintf(stderr,
               "processes: a read takes %.2f us with %d reading, %.2f us with one; cost per call %.2f\n",
               median(waits) * 1e6, processes, median(waitsOfOne) * 1e6, ratio);
  return ratio;
}

// The median of a figure of /proc/PID/smaps_rollup when the program has got where it tells.
double memoryOf(const Command& command, const std::string& figure) {
  std::vector<double> sizes;
  for (int round = 0; round < kMemoryRounds; ++round) {
    // Two of it: what they share then counts as shared.
    Programs programs(command, 2);
    programs.awaitAll();
    sizes.push_back(programs.memoryOfFirst(figure));
  }
  return median(sizes);
}

double memoryAdded(const std::string& figure) {
  return memoryOf(client(0), figure) - memoryOf({QVN_IDLE}, figure);
}

void run(const char* file) {
  const Installation installation;
  installation.storePrinters(kFirst, kStored, kTextSize);
  RatioTable table;
  // How soon a tool that is started for one question answers it.
  table.atMost(
      "start: from exec to the first stored read, 10,000 devices / bare program",
      medianRatio(
          kStartRounds, [&] { return startOf(client(0)); }, [&] { return startOf(bareRead(installation)); }),
      3);
  // Many processes of a print server ask at the same time without slowing each other down.
  costOfReads(kFew);
  table.atMost("processes: one stored read with 16 processes reading / with one, per call",
               costOfReads(kMany), 2.5);
  // How many clients fit into a machine. What each has written for itself alone; clean pages are those of
  // files, the modules and the registry, which are in memory once however many clients map them.
  table.atMost("memory: what QR__serv adds to an idle client, KiB", memoryAdded("Private_Dirty"), 105);
  std::fprintf(stderr, "memory: with the files' pages that it maps, %.0f KiB\n", memoryAdded("Rss"));
  table.print();
  table.appendTo(file);
}

}  // namespace
}  // namespace qvn::bench

int main(int argc, char** argv) { return qvn::bench::benchMain(argc, argv, qvn::bench::run); }
