// Measures the exported functions in pairs, prints the table and adds it to the file that the first argument
// names. Further arguments choose families of pairs; without any all are measured.
#include <cstdio>
#include <exception>
#include <set>
#include <string>

#include "pairs/pairs.h"
#include "support/simulator/simulator_process.h"

namespace {

// As fast as a quick printer's network port.
constexpr std::uint64_t kSlowRate = std::uint64_t{16} << 20;

using namespace qvn::bench;

void run(const char* file, const std::set<std::string>& families) {
  const auto isChosen = [&](const char* family) { return families.empty() || families.contains(family); };
  // The sinks first, while the process has one thread.
  ByteSink fast;
  ByteSink slow(kSlowRate);
  AlertSource alerts;
  const ScanSource pages;
  const HidSource reports;
  qvn::test::SimulatorProcess device({"--discard", "--quit-on-eof"});
  const Installation installation;
  installation.storePrinter(kFastPrinter, fast.port(), device.bidiPort());
  installation.storePrinter(kSlowPrinter, slow.port(), device.bidiPort());
  installation.storePrinter(kAlertingPrinter, fast.port(), alerts.port());
  installation.storeScanner(kFastScanner, pages.port());
  installation.storeHid(kBusyHid, reports.port());

  RatioTable table;
  if (isChosen("print")) measurePrinting(installation, fast, slow, table);
  if (isChosen("exchange")) measureExchanges(installation, device.bidiPort(), pages.port(), table);
  if (isChosen("alert")) measureAlerts(installation, alerts, table);
  if (isChosen("scan")) measureScanning(installation, pages, table);
  if (isChosen("hid")) measureHids(installation, reports, table);
  if (isChosen("discovery")) measureDiscovery(installation, table);
  if (isChosen("enumerate")) measureEnumeration(installation, table);
  if (isChosen("call")) measureCalls(installation, table);
  table.print();
  table.appendTo(file);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("usage: qvn_bench_pairs FILE [print|exchange|alert|scan|hid|discovery|enumerate|call]...\n",
               stderr);
    return 2;
  }
  try {
    run(argv[1], {argv + 2, argv + argc});
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "qvn_bench_pairs: %s\n", error.what());
    return 1;
  }
}
