// qvn-sim: a printer that speaks NPA packets, on loopback, in a process of its own.
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

#include "bidi_port.h"
#include "command_line.h"
#include "console.h"
#include "discovery_port.h"
#include "event_loop.h"
#include "job_queue.h"
#include "job_store.h"
#include "print_port.h"
#include "printer.h"
#include "trace.h"

namespace {

sim::Descriptor stopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  signal(SIGPIPE, SIG_IGN);  // nobody reads the answers any more
  return sim::Descriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

void simulate(sim::Options options) {
  const sim::Descriptor signals = stopSignals();
  sim::EventLoop loop;
  sim::Trace trace(options.trace);
  sim::JobStore store(options.jobs, !options.discard);

  // The ports and the printer know each other in a circle; the pointers close it.
  sim::PrintPort* printPort = nullptr;
  sim::BidiPort* bidiPort = nullptr;
  sim::Printer* statusOf = nullptr;
  const auto ending =
      options.identity.family == sim::kBpdPrinter ? sim::JobEnding::WithConnection : sim::JobEnding::AtMarker;
  sim::JobQueue jobs(store, options.faults, ending, options.printTime, options.cancelRun,
                     {.onCancelSeen = [&] { bidiPort->alert(sim::Printer::cancelAcknowledge()); },
                      .onBegun = [&] { bidiPort->jobStatus(statusOf->setBusy(true)); },
                      .onEnded =
                          [&](const sim::JobRecord& record) {
                            bidiPort->jobStatus(statusOf->setBusy(false));
                            if (options.events) sim::printLine(R"({"job":)" + sim::toJson(record) + "}");
                            if (!record.error.empty()) {
                              std::cerr << "qvn-sim: job " << record.id << ": " << record.error << '\n';
                            }
                          }});
  sim::Printer printer(jobs, options.faults, [&] { printPort->readArrived(); });
  sim::PrintPort print(loop, options.faults, jobs, options.address, options.printPort);
  sim::BidiPort bidi(loop, options.faults, printer, trace);
  if (!options.plain) bidi.listen(options.address, options.bidiPort);
  printPort = &print;
  bidiPort = &bidi;
  statusOf = &printer;
  const sim::DiscoveryPort discovery(loop, options.faults, options.identity, print.port(), bidi.port(),
                                     options.address, options.discoveryPort);
  const sim::Console console(loop, options.faults, printer, bidi, options.quitAtEndOfInput);
  loop.watch(signals.get(), [&] { loop.stop(); });

  sim::printLine(nlohmann::ordered_json{
      {"address", options.address},
      {"discovery", discovery.port()},
      {"bidi", bidi.port()},
      {"print", print.port()},
      {"family", options.identity.family},
      {"model", options.identity.model},
      {"serial", options.identity.serial},
      {"pid",
       getpid()}}.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
  loop.run();
  jobs.closeAll();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    int exitCode = 0;
    auto options = sim::parseCommandLine(argc, argv, exitCode);
    if (!options) return exitCode;
    simulate(std::move(*options));
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "qvn-sim: " << error.what() << '\n';
    return 1;
  }
}
