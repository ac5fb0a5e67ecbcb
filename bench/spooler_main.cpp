// From lp to paper: a job through this library's backend against the same job through the scheduler's own
// "socket" backend, to the same device. Prints the row and adds it to the file that the argument names.
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "cups/scheduler.h"
#include "installation.h"
#include "measure.h"
#include "qvn/qvn.h"
#include "ratio_table.h"
#include "support/process/eventually.h"
#include "support/simulator/simulator_process.h"

namespace qvn::bench {
namespace {

constexpr std::size_t kJobSize = std::size_t{64} << 20;
constexpr char kSocketBackend[] = "/usr/lib/cups/backend-available/socket";

std::string makeJob(const std::filesystem::path& directory) {
  const std::filesystem::path path = directory / "job.prn";
  std::ofstream file(path, std::ios::binary);
  const std::string block(std::size_t{1} << 20, 'j');
  for (std::size_t written = 0; written < kJobSize; written += block.size()) file << block;
  if (!file.flush()) throw std::runtime_error("cannot write the job's file");
  return path.string();
}

void run(const char* file) {
  if (!std::filesystem::exists(kSocketBackend)) {
    throw std::runtime_error("the scheduler's socket backend is not installed (package cups)");
  }
  test::SimulatorProcess device(
      {"--family", "BpdPrinter", "--plain", "--discard", "--events", "--quit-on-eof"});
  const Installation installation;
  const std::string place = device.address() + ":" + std::to_string(device.discoveryPort());
  require(QvnDiscovery(installation.client(), "IPv4", place.c_str()), "QvnDiscovery");
  // The scheduler's own backends run as a user of its own.
  std::filesystem::permissions(installation.home(),
                               std::filesystem::perms::group_exec | std::filesystem::perms::others_exec,
                               std::filesystem::perm_options::add);
  const test::Scheduler scheduler(installation.home() / "cups", installation.home());
  std::filesystem::create_symlink(kSocketBackend, installation.home() / "cups/bin/backend/socket");
  const auto command = [&](const std::vector<std::string>& arguments) {
    const test::Result result = scheduler.command(arguments);
    if (result.exitCode != 0) throw std::runtime_error(arguments.front() + ": " + result.errors);
    return result.output;
  };
  const std::string socket = device.address() + ":" + std::to_string(device.printPort());
  command({"lpadmin", "-p", "ours", "-v", "qvn://IP_SIM0000001", "-m", "raw", "-E"});
  command({"lpadmin", "-p", "theirs", "-v", "socket://" + socket, "-m", "raw", "-E"});

  const std::string job = makeJob(installation.home());
  const auto print = [&](const char* queue) {
    const Seconds time = timeOf([&] {
      command({"lp", "-d", queue, "-o", "raw", job});
      if (device.nextJob().at("bytes") != kJobSize) throw std::runtime_error("the device got another job");
    });
    // What the scheduler still has to do for this job is none of the next one's time.
    if (!test::eventually([&] { return command({"lpstat", "-o", queue}).empty(); })) {
      throw std::runtime_error("the job does not end");
    }
    return time;
  };
  RatioTable table;
  table.atMost("spooler: lp to the device's end of job, qvn / socket backend, 64 MiB",
               "a job of the print server is at the printer sooner than through the server's own backend",
               0.8, medianRatio([&] { return print("ours"); }, [&] { return print("theirs"); }));
  table.print();
  table.appendTo(file);
}

}  // namespace
}  // namespace qvn::bench

int main(int argc, char** argv) { return qvn::bench::benchMain(argc, argv, qvn::bench::run); }
