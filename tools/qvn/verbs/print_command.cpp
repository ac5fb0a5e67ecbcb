// qvn print: files to a printer, each as a job of its own.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "platform/process/system_information.h"
#include "print_job.h"
#include "progress_bar.h"
#include "qvn/transport/attributes.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"
#include "shared/client/job_data.h"
#include "shared/client/leave.h"
#include "shared/client/open_printer.h"
#include "shared/client/output.h"
#include "verbs/commands.h"
#include "verbs/quiet.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

// How long a printer is offered data that it does not take, in seconds.
constexpr std::uint32_t kPatience = 60;

struct Options {
  std::vector<std::string> files;
  std::string device;
  std::string user;
  std::string job;
  std::uint32_t copies = 1;
  std::uint32_t timeout = kPatience;
  bool quiet = false;
  bool json = false;
};

JobNames jobNames(const Session& session, const Device& printer, const Options& options) {
  JobNames names;
  names.queue = readText(session, printer, attribute::kPortname);
  if (names.queue.empty()) {
    names.queue = "qvn";
  }
  platform::computerName(names.host);
  const char* user = std::getenv("USER");
  names.user = !options.user.empty() || user == nullptr ? options.user : user;
  return names;
}

void tell(const PrintJob::Outcome& outcome, const JobNames& names, const Device& printer,
          const Options& options) {
  if (options.json) {
    Json said = {{"job", names.title},
                 {"handle", printer.handle},
                 {"portname", names.queue},
                 {"bytes", outcome.bytes},
                 {"confirmed", nullptr}};
    if (outcome.confirmed) said["confirmed"] = *outcome.confirmed;
    printJsonLine(said);
    std::cout.flush();
    return;
  }
  if (options.quiet) return;
  const std::string job = "'" + names.title + "' " + (outcome.confirmed == true ? "on " : "to ") +
                          printer.text() + " (" + names.queue + "), " + std::to_string(outcome.bytes) +
                          " bytes";
  if (outcome.confirmed == true) {
    std::cout << "printed " << job << std::endl;
  } else if (outcome.confirmed == false) {
    std::cout << "sent " << job << "; the printer did not say within " << inSeconds(outcome.asked)
              << " that it came out" << std::endl;
  } else {
    std::cout << "sent " << job << std::endl;
  }
}

void print(Options& options) {
  if (options.files.empty()) {
    if (standardInputIsTerminal()) throw UsageError("name the files to print, or send one through a pipe");
    options.files = {"-"};
  }
  if (options.copies > 1 &&
      std::find(options.files.begin(), options.files.end(), "-") != options.files.end()) {
    throw UsageError("standard input can be read once: there is one copy of it");
  }
  Interrupt::install();
  const Session session;
  const Device device = selectPrinter(session, options.device);
  JobNames names = jobNames(session, device, options);
  auto connecting = std::make_unique<LeaveOnInterrupt>("interrupted while connecting to " + device.text());
  OpenPrinter printer(session, device);
  connecting.reset();
  for (const std::string& name : options.files) {
    for (std::uint32_t copy = 0; copy < options.copies; ++copy) {
      InputFile file(name);
      names.title = options.job;
      if (names.title.empty()) {
        names.title = name == "-" ? "standard input" : std::filesystem::path(name).filename().string();
      }
      PrintJob job(session, printer, names, file, options.timeout * 1000, options.quiet);
      tell(job.print(), names, device, options);
    }
  }
}

}  // namespace

void addPrintCommand(Verb& root) {
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("print", "Print files, each as a job of its own");
  verb.addOption(
      "FILE", options->files,
      "The files, sent as they are; - is standard input, which is also read when it is a pipe and there "
      "is no file");
  verb.addDevice(options->device, "printer");
  verb.addOption("-n,--copies", options->copies, "How often to print each file, each time as a job")
      .between(1, 9999);
  verb.addOption("-u,--user", options->user, "Whose job it is; otherwise the value of USER");
  verb.addOption("--job", options->job, "The job's name; otherwise the file's");
  verb.addOption("--timeout", options->timeout,
                 "Give up when the printer has taken no data for so many seconds; 0: never")
      .between(0, 86400)
      .showDefault();
  addQuiet(verb, options->quiet);
  verb.addJson(options->json, "Print a line of JSON for each job");
  verb.footer(
      "Ctrl-C cancels the job on the printer and then ends; a second Ctrl-C ends at once and leaves the\n"
      "job to the printer. On a Cpd printer a file that does not end with the end-of-job marker\n"
      "(1B 2A 82 00 00 00 00 AC) gets it, without which the printer would drop the job.\n\n"
      "Examples:\n"
      "  qvn print report.prn\n"
      "  qvn print -d LAB1 -u anna cover.pcl body.pcl\n"
      "  gunzip -c letter.pcl.gz | qvn print --job letter");
  verb.callback([options] { print(*options); });
}

}  // namespace qvn::cli
