// What the library costs a program that starts, many that run, and one that does nothing, all seen from
// outside. Prints the rows and adds them to the file that the argument names.
#include <cstdio>
#include <string>
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

constexpr int kMemoryRounds = 11;

// As long as each other: a bare read is so much shorter.
constexpr std::uint32_t kCalls = 40000;
constexpr std::uint32_t kBareCalls = 400000;
constexpr int kFew = 2;
constexpr int kMany = 16;

using Command = std::vector<std::string>;

// A client that makes so many calls after its first one.
Command client(std::uint32_t calls) {
  return {QVN_STORED_READ, std::to_string(kFirst), std::to_string(kStored), std::to_string(calls)};
}

// The same without the library.
Command bare(const Installation& installation, std::uint32_t calls) {
  return {QVN_BARE_READ, (installation.home() / "registry.mdb").string(),
          R"(Software\Quorin Tools\Qvn\Local\qr__\PrinterStore)", std::to_string(kFirst + kStored / 2),
          std::to_string(calls)};
}

// From before the program is started until it has what it was started for. Its end does not count.
Seconds startOf(const Command& command) {
  const std::uint64_t begin = nanosecondsNow();
  Programs program(command, 1);
  program.awaitAll();
  return static_cast<double>(nanosecondsNow() - begin) / 1e9;
}

// How long so many processes at once take for all their calls.
Seconds callsOf(const Command& command, int processes) {
  Programs programs(command, processes);
  programs.awaitAll();
  return timeOf([&] {
    programs.go();
    programs.awaitAll();
  });
}

// A stored read with that many processes reading all the time, against one with a single process. What
// processes wait for a processor is no cost of the library: 16 of them on 2 processors take 8 times as long
// whatever they do. So either side's unit is the bare read, which takes no lock, with as many processes
// reading; what remains is what the library's locks between processes make them wait, idle or spinning.
Ratio slowdown(const Installation& installation, int processes) {
  std::vector<double> waits;
  std::vector<double> waitsAlone;
  const auto inBareReads = [&](int readers, std::vector<double>& noted) {
    const Seconds all = callsOf(client(kCalls), readers);
    noted.push_back(all / kCalls);
    return all / callsOf(bare(installation, kBareCalls), readers);
  };
  const Ratio ratio =
      medianRatio([&] { return inBareReads(processes, waits); }, [&] { return inBareReads(1, waitsAlone); });
  std::fprintf(stderr,
               "processes: a read takes %.2f us with %d reading, %.2f us with one; without the wait for "
               "processors %.2f times as long\n",
               Ratio(waits).median * 1e6, processes, Ratio(waitsAlone).median * 1e6, ratio.median);
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
  return Ratio(sizes).median;
}

double memoryAdded(const std::string& figure) {
  return memoryOf(client(0), figure) - memoryOf({QVN_IDLE}, figure);
}

void run(const char* file) {
  const Installation installation;
  installation.storePrinters(kFirst, kStored, kTextSize);
  RatioTable table;
  table.atMost(
      "start: from exec to the first stored read, 10,000 devices / bare program",
      "a tool that is started for one question answers it at once", 3,
      medianRatio([&] { return startOf(client(0)); }, [&] { return startOf(bare(installation, 0)); }));
  slowdown(installation, kFew);
  table.atMost("processes: one stored read with 16 processes reading / with one, per call",
               "the many processes of a print server do not slow each other down", 2.5,
               slowdown(installation, kMany));
  // What each has written for itself alone: clean pages are those of files, the modules and the registry,
  // which are in memory once however many clients map them.
  table.atMost("memory: what QR__serv adds to an idle client, KiB",
               "a machine has room for thousands of clients", 105, memoryAdded("Private_Dirty"));
  std::fprintf(stderr, "memory: with the files' pages that it maps, %.0f KiB\n", memoryAdded("Rss"));
  table.print();
  table.appendTo(file);
}

}  // namespace
}  // namespace qvn::bench

int main(int argc, char** argv) { return qvn::bench::benchMain(argc, argv, qvn::bench::run); }
