// qvn-sim: a printer, scanner and button panel on loopback, in a process of its own.
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <exception>
#include <iostream>
#include <memory>

#include "base/bytes.h"
#include "base/json_line.h"
#include "base/trace.h"
#include "command_interpreter.h"
#include "command_line.h"
#include "console.h"
#include "discovery_port.h"
#include "documents/object_port.h"
#include "esc/scan_port.h"
#include "esc/scanner.h"
#include "hid/hid_port.h"
#include "net/event_loop.h"
#include "net/sockets.h"
#include "page/page_source.h"
#include "page/page_store.h"
#include "page/picture.h"
#include "page/png_picture.h"
#include "page/scan_engine.h"
#include "page/test_chart.h"
#include "print/bidi_port.h"
#include "print/job_queue.h"
#include "print/job_store.h"
#include "print/print_port.h"
#include "print/printer.h"
#include "script.h"
#include "usb/descriptors.h"
#include "usb/device.h"
#include "usb/usbip_server.h"

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

std::unique_ptr<sim::Picture> pictureFrom(const std::filesystem::path& file) {
  if (file.empty()) return std::make_unique<sim::TestChart>();
  return std::make_unique<sim::PngPicture>(file);
}

sim::usb::Description usbDescription(const sim::Options& options) {
  using Scanner = sim::usb::Description::Scanner;
  const sim::Identity& identity = options.identity;
  const Scanner scanner = identity.family == sim::kBpdPrinter ? Scanner::Blocks : Scanner::EscCommands;
  return {.family = identity.family,
          .model = identity.model,
          .serial = identity.serial,
          .takesPackets = !options.plain,
          .scanner = options.hasScanner() ? scanner : Scanner::None,
          .hasPanel = options.hasScanner()};
}

void simulate(sim::Options options) {
  const sim::Descriptor signals = stopSignals();
  sim::EventLoop loop;
  sim::Trace trace(options.trace);
  sim::JobStore jobStore(options.jobs, !options.discard);

  // The ports and the printer know each other in a circle; the pointers close it.
  sim::PrintPort* printPort = nullptr;
  sim::BidiPort* bidiPort = nullptr;
  sim::Printer* statusOf = nullptr;
  const auto ending =
      options.identity.family == sim::kBpdPrinter ? sim::JobEnding::WithConnection : sim::JobEnding::AtMarker;
  sim::JobQueue jobs(jobStore, options.faults, ending, options.printTime, options.cancelRun,
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

  const std::unique_ptr<sim::Picture> picture = pictureFrom(options.page);
  sim::PageStore pageStore(options.scans);
  sim::ScanEngine engine(options.sheets, options.faults);
  sim::PageSource pages(*picture, pageStore, options.faults, options.blockSize);
  sim::Scanner scanner(options.identity.model, engine, options.faults);
  sim::ScanPort scan(loop, options.faults, scanner, engine, pages, trace);
  sim::ObjectPort objects(loop, options.faults, engine, pages, trace, options.framesReplies);
  sim::HidPort hid(loop);
  if (options.hasScanner()) {
    if (options.identity.family == sim::kBpdPrinter) {
      objects.listen(options.address, options.scanPort);
    } else {
      scan.listen(options.address, options.scanPort);
    }
    hid.listen(options.address, options.hidPort);
  }

  sim::usb::Device usb(loop, options.faults, usbDescription(options),
                       ending == sim::JobEnding::WithConnection,
                       {.print =
                            [&](sim::Descriptor socket, std::shared_ptr<const bool> isBroken) {
                              print.connect(std::move(socket), std::move(isBroken));
                            },
                        .bidi = [&](sim::Descriptor socket) { bidi.connect(std::move(socket)); },
                        .scan =
                            [&](sim::Descriptor socket) {
                              if (options.identity.family == sim::kBpdPrinter) {
                                objects.connect(std::move(socket));
                              } else {
                                scan.connect(std::move(socket));
                              }
                            },
                        .hid = [&](sim::Descriptor socket) { hid.connect(std::move(socket)); },
                        .portStatus = [&] { return printer.portStatus(); }});
  sim::usb::UsbipServer usbip(loop, usb);
  if (options.usbPort) usbip.listen(options.address, *options.usbPort);

  const std::uint16_t scanPort = scan.port() != 0 ? scan.port() : objects.port();
  const sim::TcpPorts ports{print.port(), bidi.port(), scanPort, hid.port()};
  const sim::DiscoveryPort discovery(loop, options.faults, options.identity, ports, options.address,
                                     options.discoveryPort);
  sim::CommandInterpreter commands(
      {loop, options.faults, printer, bidi, scanner, engine, objects, hid, options.hasScanner(), usb, usbip});
  const sim::Console console(loop, commands, options.quitAtEndOfInput);
  sim::Script script(loop, commands, options.script);
  loop.watch(signals.get(), [&] { loop.stop(); });

  sim::printLine(sim::jsonLine({{"address", options.address},
                                {"discovery", discovery.port()},
                                {"bidi", ports.bidi},
                                {"print", ports.print},
                                {"scan", ports.scan},
                                {"hid", ports.hid},
                                {"usb", usbip.port()},
                                {"family", options.identity.family},
                                {"model", options.identity.model},
                                {"serial", options.identity.serial},
                                {"pid", static_cast<std::uint64_t>(getpid())}}));
  if (isatty(STDOUT_FILENO) != 0) {
    sim::printLine("qvn discover --transport IPv4 " + options.address + ':' +
                   std::to_string(discovery.port()));
  }
  script.run();
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
