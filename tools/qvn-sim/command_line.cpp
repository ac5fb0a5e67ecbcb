#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <stdexcept>
#include <vector>

#include "command_interpreter.h"
#include "documents/bpd_blocks.h"
#include "esc/esc_commands.h"

namespace sim {

FaultTargets Options::faultTargets() const {
  FaultTargets targets;
  if (usbPort) targets = targets | FaultTarget::Usb;
  if (usbPort && !plain) targets = targets | FaultTarget::UsbIn;
  if (!plain) targets = targets | FaultTarget::NpaReply | FaultTarget::NpaSilence;
  if (!hasScanner()) return targets;
  if (identity.family == kCpdPrinter) return targets | FaultTarget::EscReply;
  targets = targets | FaultTarget::MethodReply | FaultTarget::Notification;
  return framesReplies ? targets | FaultTarget::Frame : targets;
}

std::optional<Options> parseCommandLine(int argc, char** argv, int& exitCode) {
  Options options;
  std::vector<std::string> faults;
  std::uint32_t printTime = 0;

  CLI::App app(
      "A simulated printer, scanner and button panel on loopback. Prints its ports as one line of JSON when "
      "it is ready.",
      "qvn-sim");
  app.add_option("--family", options.identity.family, "CpdPrinter or BpdPrinter")
      ->capture_default_str()
      ->check(CLI::IsMember({kCpdPrinter, kBpdPrinter}));
  app.add_option("--model", options.identity.model, "Model name")->capture_default_str();
  app.add_option("--serial", options.identity.serial, "Serial number")->capture_default_str();
  app.add_option("--name", options.identity.name, "Name that people gave it")->capture_default_str();
  app.add_option("--address", options.address, "IPv4 address to stand on")->capture_default_str();
  app.add_option("--discovery-port", options.discoveryPort, "UDP port for discovery; 0: any free one");
  app.add_option("--print-port", options.printPort, "TCP port for print data; 0: any free one");
  app.add_option("--bidi-port", options.bidiPort, "TCP port for NPA packets; 0: any free one");
  app.add_option("--scan-port", options.scanPort, "TCP port for scanning; 0: any free one");
  app.add_option("--hid-port", options.hidPort, "TCP port for HID reports; 0: any free one");
  app.add_option("--usb", options.usbPort,
                 "Be on USB as well, exported by USB/IP on a TCP port; 0: any free one, 3240 unless given")
      ->expected(0, 1)
      ->default_str("3240");
  app.add_flag("--plain", options.plain, "Take print data and nothing else (a BpdPrinter)");
  app.add_flag("--printer-only", options.printerOnly, "Have neither scanner nor HID");
  app.add_option("--jobs", options.jobs, "Directory for finished jobs (job-<id>.prn and job-<id>.json)");
  app.add_flag("--discard", options.discard, "Keep records of jobs only, not their data");
  app.add_option("--print-time", printTime, "Milliseconds from receiving a job to having printed it");
  app.add_option("--cancel-run", options.cancelRun, "Zero bytes at the end of a job that cancel it")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  app.add_option("--page", options.page,
                 "Picture (PNG) on the glass and in the feeder; otherwise a test chart")
      ->check(CLI::ExistingFile);
  app.add_option("--feeder", options.sheets, "Sheets in the feeder");
  app.add_option("--block", options.blockSize, "Longest payload of a scan data block, in bytes")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  app.add_flag("--framed", options.framesReplies,
               "Send replies to documents in a frame (the scanner of a BpdPrinter)");
  app.add_option("--scans", options.scans, "Directory for the pages that were sent (page-<n>.png)");
  app.add_option("--script", options.script, "File of commands to carry out, with wait MS among them")
      ->check(CLI::ExistingFile);
  app.add_option("--trace", options.trace,
                 "File for every packet, ESC command and document received and sent");
  app.add_flag("--events", options.events, "Print a line of JSON for every job that ends");
  app.add_flag("--quit-on-eof", options.quitAtEndOfInput, "End when standard input does");
  app.add_option("--fault", faults, "A fault to have (repeatable)")->allow_extra_args(false);
  app.set_version_flag("--version", "qvn-sim " QVN_VERSION, "Print the version and exit");
  app.add_subcommand("help", "Print this help and exit");
  app.footer(
      "Faults: delay-reply=MS[:COMMAND[:TIMES]] late-reply=MS[:COMMAND[:TIMES]] drop-reply=COMMAND[:TIMES]\n"
      "corrupt-reply=... misframe-reply=... double-reply=... reject=... close-bidi=... (as drop-reply)\n"
      "busy never-finish slow-print=BYTES_PER_SECOND close-mid-job=BYTES[:TIMES] slow-discovery=MS\n"
      "status-early=BYTES[:TIMES] status-late=MS[:TIMES] status-twice[:TIMES] status-never[:TIMES]\n"
      "wrong-length=BLOCK[:TIMES] stop-page=BYTES[:TIMES] close-mid-page=BYTES[:TIMES]\n"
      "slow-scan=BYTES_PER_SECOND ignore-abort[:TIMES] no-data[:TIMES] read-error=BLOCKS[:TIMES]\n"
      "oversize-reply=COMMAND[:TIMES] wrong-id=COMMAND[:TIMES] host-mode-fail[:TIMES] "
      "host-mode-stay[:TIMES]\n"
      "usb-stall=BYTES[:TIMES] usb-unplug=BYTES[:TIMES] usb-short=BYTES[:TIMES] usb-zero[:TIMES]\n"
      "usb-babble[:TIMES] usb-no-id[:TIMES] usb-little-id[:TIMES] usb-empty-id[:TIMES]\n\n"
      "Standard input takes commands, one a line:\n" +
      std::string(kCommandHelp) +
      "\nExample:\n"
      "  qvn-sim --jobs jobs --fault slow-print=100000");
  try {
    app.parse(argc, argv);
    if (app.got_subcommand("help")) throw CLI::CallForHelp();
    if (options.plain && options.identity.family != kBpdPrinter) {
      throw std::invalid_argument("--plain is for --family BpdPrinter: every CpdPrinter has a bidi port");
    }
    const std::size_t longestBlock =
        options.identity.family == kBpdPrinter ? bpd::kLongestScanData : esc::kLongestPayload;
    if (options.blockSize > longestBlock) {
      throw std::invalid_argument("--block: at most " + std::to_string(longestBlock) + " for a " +
                                  options.identity.family);
    }
    options.faults = FaultSwitches(faultTargetNamed, options.faultTargets());
    for (const std::string& fault : faults) options.faults.add(fault);
    for (const std::string* text :
         {&options.identity.model, &options.identity.serial, &options.identity.name}) {
      if (text->empty() || text->size() > 63 || text->find_first_of("\n<>") != std::string::npos) {
        throw std::invalid_argument(
            "model, serial and name: 1 to 63 characters on one line, without < and >");
      }
    }
  } catch (const CLI::ParseError& error) {
    exitCode = app.exit(error);
    return std::nullopt;
  } catch (const std::invalid_argument& error) {
    std::cerr << "qvn-sim: " << error.what() << '\n';
    exitCode = 2;
    return std::nullopt;
  }
  options.printTime = std::chrono::milliseconds(printTime);
  return options;
}

}  // namespace sim
