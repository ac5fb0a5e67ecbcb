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

// The processor time that the machine spends for one call, idle time of processors that could have been used
// included. By waiting alone, 16 processes on 2 processors could not do better than 8 times as long as one;
// what remains is what they do to each other: calls that spin or sleep for one another's locks, whoever holds
// one being put to sleep, caches and processors changed.
Seconds costPerCall(int processes) {
  const int processors = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
  return waitPerCall(processes) * std::min(processes, processors) / processes;
}

void tellReads(int processes) {
  std::vector<double> waits;
  std::vector<double> alone;
  for (int round = 0; round < kReadRounds; ++round) {
    waits.push_back(waitPerCall(processes));
    alone.push_back(waitPerCall(1));
  }
  std::fprintf(stderr, "processes: a stored read takes %.2f us with %d processes reading, %.2f us with one\n",
               median(waits) * 1e6, processes, median(alone) * 1e6);
}

// The median over several programs that have told that they are where they are to be measured.
double memoryOf(const Command& command, const std::string& name) {
  std::vector<double> sizes;
  for (int round = 0; round < kMemoryRounds; ++round) {
    Programs program(command, 1);
    program.awaitAll();
    sizes.push_back(program.memory(name));
  }
  return median(sizes);
}

double memoryAdded(const std::string& name) { return memoryOf(client(0), name) - memoryOf({QVN_IDLE}, name); }

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
  // A print server's processes ask at the same time without slowing each other down.
  tellReads(kFew);
  tellReads(kMany);
  table.atMost("processes: one stored read with 16 processes reading / with one, per call",
               medianRatio(
                   kReadRounds, [] { return costPerCall(kMany); }, [] { return costPerCall(1); }),
               2.5);
  for (const char* other : {"Rss", "Pss", "Private_Clean", "Private_Dirty"})
    std::fprintf(stderr, "memory: %s grows by %.0f KiB\n", other, memoryAdded(other));
  // How many clients a machine can hold.
  table.atMost("memory: what QR__serv adds to an idle client, KiB", memoryAdded("Private_Dirty"), 1000);
  table.print();
  table.appendTo(file);
}

}  // namespace
}  // namespace qvn::bench

int main(int argc, char** argv) { return qvn::bench::benchMain(argc, argv, qvn::bench::run); }
