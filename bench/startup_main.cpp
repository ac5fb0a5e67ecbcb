// What the library costs a program that starts, from outside: programs are started and measured against ones
// that do the same without it. Prints the rows and adds them to the file that the argument names.
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

constexpr int kStartRounds = 101;

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

void run(const char* file) {
  const Installation installation;
  installation.storePrinters(kFirst, kStored, kTextSize);
  RatioTable table;
  // How soon a tool that is started for one question answers it.
  table.atMost(
      "start: from exec to the first stored read, 10,000 devices / bare program",
      medianRatio(
          kStartRounds, [&] { return startOf(client(0)); }, [&] { return startOf(bareRead(installation)); }),
      6);
  table.print();
  table.appendTo(file);
}

}  // namespace
}  // namespace qvn::bench

int main(int argc, char** argv) { return qvn::bench::benchMain(argc, argv, qvn::bench::run); }
