// qvn print: files to a printer, each as a job of its own.
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "library_settings.h"
#include "platform/process/system_information.h"
#include "progress_bar.h"
#include "qvn/transport/attributes.h"
#include "shared/alerts/alert_words.h"
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

// How long a printer that took nothing, or has gone, is offered the cancelling of the job; the library would
// go on for more than half a minute.
constexpr platform::Milliseconds kFarewell = 5000;

// The class of alerts that tell of a cancelled job.
constexpr std::uint32_t kExtendedAlerts = 0x100000;

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

// Whether the printer has said that it drops the job. A client's callback has no argument to carry it.
std::atomic<bool> acknowledged{false};

void onAlert(std::uint32_t, const std::uint8_t* alert, std::uint32_t length, std::uint32_t) {
  if (alerts::decodeAlert({alert, length}).kind == alerts::AlertKind::CancelAcknowledged) acknowledged = true;
}

// "3.7 MB of 8.0 MB", or "3.7 MB" of a pipe.
std::string extent(std::uint64_t done, std::optional<std::uint64_t> total) {
  const std::string text = formatBytes(static_cast<double>(done));
  return total ? text + " of " + formatBytes(static_cast<double>(*total)) : text;
}

std::string inSeconds(platform::Milliseconds duration) {
  return std::to_string((duration + 500) / 1000) + " s";
}

// What came of a job.
struct Outcome {
  std::uint64_t bytes = 0;
  // Whether the printer said that it came out; none where printers do not say.
  std::optional<bool> confirmed;
  platform::Milliseconds asked = 0;
};

// One job, from its start to its end.
class PrintJob {
 public:
  PrintJob(const Session& session, OpenPrinter& printer, const JobNames& names, InputFile& file,
           const Options& options)
      : session_(session),
        printer_(printer),
        file_(file),
        options_(options),
        what_("'" + names.title + "' on " + printer.device().text()),
        names_(names) {}

  // Throws Failure, or Interrupted.
  Outcome print(bool endsWithMarker) {
    acknowledged = false;
    printer_.setPatience(options_.timeout * 1000,
                         [this] { leaveAfter(kFarewell, timedOut().what(), kFailedExit); });
    requireOf(session_, printer_.device(), printer_.startJob(names_), "cannot start " + what_,
              DevicePort::Print);
    send(endsWithMarker);
    check();
    Outcome outcome{read_, std::nullopt, 0};
    if (const auto took = printer_.endTook()) {
      outcome.asked = *took;
      outcome.confirmed = *took < longestEnd();
    }
    return outcome;
  }

 private:
  // How long the library asks the printer whether the job is over.
  static platform::Milliseconds longestEnd() { return numberSetting(setting::kTeojDuration); }

  void send(bool endsWithMarker) {
    ProgressBar progress(names_.title, file_.size(), !options_.quiet && standardErrorIsTerminal(),
                         "the printer takes no data; Ctrl-C cancels the job");
    OnInterrupt canceller([&] {
      const bool tooLate = complete_ && printer_.hasWholeJob();
      if (!options_.quiet) sayNow(whatHappens(tooLate) + "; Ctrl-C again leaves at once");
      if (!tooLate) printer_.cancelJob();
    });
    JobData data(
        [&](char* buffer, std::size_t size) {
          const std::size_t count = file_.read(buffer, size);
          read_ += count;
          return count;
        },
        endsWithMarker);
    try {
      while (written_ == QRN_ERROR_SUCCESS && !complete_ && !printer_.jobCancelled()) {
        const std::string block = data.next();
        if (Interrupt::requested()) break;
        complete_ = block.empty();
        written_ = printer_.write(block, [&](std::size_t taken) { progress.update(taken_ += taken); });
      }
    } catch (const Failure& failure) {
      readingFailed_ = failure.what();
      printer_.cancelJob();
    }
    canceller.settle();
    if (!Interrupt::requested()) {
      progress.note("waiting until it has come out, at most " + inSeconds(longestEnd()));
      // Patience that is at its end has said so itself.
      const bool failed = written_ != QRN_ERROR_SUCCESS && written_ != QRN_ERROR_TIMEOUT;
      if (failed) leaveAfter(kFarewell, writingFailed().what(), kFailedExit);
    }
    ended_ = printer_.endJob();
  }

  void check() const {
    if (Interrupt::requested()) throw Interrupted(what_ + stopped());
    if (!readingFailed_.empty()) throw Failure(readingFailed_ + "; the job was cancelled");
    if (ended_ == QRN_ERROR_TIMEOUT) throw timedOut();
    if (written_ != QRN_ERROR_SUCCESS) throw writingFailed();
    if (printer_.jobCancelled()) throw Failure(what_ + " was rejected or cancelled by the printer");
    require(ended_, "cannot end " + what_);
  }

  // What an interrupt leads to.
  std::string whatHappens(bool tooLate) const {
    if (!printer_.canCancel()) return "stopping; the printer prints what it was given";
    if (!tooLate) return "cancelling, which can take a minute";
    return "the printer has the whole job; waiting until it has come out, at most " + inSeconds(longestEnd());
  }

  // What is known of a job that was to be stopped.
  std::string stopped() const {
    if (acknowledged) return " was cancelled after " + sent();
    if (complete_ && !printer_.jobCancelled()) return " was complete before it could be cancelled";
    return " was stopped after " + sent() +
           (printer_.canCancel() ? "; the printer did not acknowledge that it drops what it has"
                                 : "; the printer prints what it was given");
  }

  Failure timedOut() const {
    return Failure("the printer took no data for " + std::to_string(options_.timeout) + " s, after " +
                   sent() + " of " + what_ + kLost);
  }

  Failure writingFailed() const {
    if (written_ == QRN_ERROR_TIMEOUT) return timedOut();
    if (written_ != QRN_ERROR_NETNAME_DELETED) return Failure("cannot write " + what_, written_);
    return Failure("the printer closed the connection after " + sent() + " of " + what_ + kLost);
  }

  std::string sent() const {
    const auto size = file_.size();
    const std::uint64_t taken = taken_;
    return extent(size ? std::min(taken, *size) : taken, size);
  }

  static constexpr char kLost[] = "; the job is lost, print it again";

  const Session& session_;
  OpenPrinter& printer_;
  InputFile& file_;
  const Options& options_;
  const std::string what_;
  const JobNames& names_;
  std::uint64_t read_ = 0;
  std::atomic<std::uint64_t> taken_ = 0;
  std::atomic<bool> complete_ = false;
  std::uint32_t written_ = QRN_ERROR_SUCCESS;
  std::uint32_t ended_ = QRN_ERROR_SUCCESS;
  std::string readingFailed_;
};

void tell(const Outcome& outcome, const JobNames& names, const Device& printer, const Options& options) {
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
  const bool endsWithMarker = isCpdPrinter(session, device);
  JobNames names = jobNames(session, device, options);
  auto connecting = std::make_unique<LeaveOnInterrupt>("interrupted while connecting to " + device.text());
  OpenPrinter printer(session, device);
  connecting.reset();
  // A printer without alerts acknowledges nothing.
  QvnRegisterForAlertsPrinter(session.client(), device.handle, kExtendedAlerts, onAlert);
  for (const std::string& name : options.files) {
    for (std::uint32_t copy = 0; copy < options.copies; ++copy) {
      InputFile file(name);
      names.title = options.job;
      if (names.title.empty()) {
        names.title = name == "-" ? "standard input" : std::filesystem::path(name).filename().string();
      }
      tell(PrintJob(session, printer, names, file, options).print(endsWithMarker), names, device, options);
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
