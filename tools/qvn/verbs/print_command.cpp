// qvn print: files to a printer, each as a job of its own.
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>

#include "platform/process/system_information.h"
#include "progress_bar.h"
#include "qvn/transport/attributes.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"
#include "shared/client/job_data.h"
#include "shared/client/open_printer.h"
#include "verbs/commands.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

struct Options {
  std::vector<std::string> files;
  std::string device;
  std::string user;
  std::string job;
  bool quiet = false;
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

// Prints the file as one job and returns the number of its bytes.
std::uint64_t printJob(OpenPrinter& printer, const JobNames& names, bool endsWithMarker, InputFile& file,
                       bool showProgress) {
  const std::string& title = names.title;
  const std::string where = " on " + printer.device().text();
  require(printer.startJob(names), "cannot start '" + title + "'" + where);

  std::uint64_t done = 0;
  bool complete = false;
  std::uint32_t result = QRN_ERROR_SUCCESS;
  std::uint32_t ended = QRN_ERROR_SUCCESS;
  std::string readingFailed;
  {
    ProgressBar progress(title, file.size(), showProgress);
    OnInterrupt canceller([&] { printer.cancelJob(); });
    JobData data(
        [&](char* buffer, std::size_t size) {
          const std::size_t count = file.read(buffer, size);
          done += count;
          return count;
        },
        endsWithMarker);
    try {
      while (result == QRN_ERROR_SUCCESS && !complete && !printer.jobCancelled()) {
        const std::string block = data.next();
        if (Interrupt::requested()) {
          break;
        }
        complete = block.empty();
        result = printer.write(block);
        progress.update(done);
        if (printer.inError()) {
          progress.note("the printer does not take the data; Ctrl-C cancels the job");
        }
      }
    } catch (const Failure& failure) {
      readingFailed = failure.what();
      printer.cancelJob();
    }
    canceller.settle();
    progress.note(Interrupt::requested() ? "cancelling" : "waiting for the printer");
    ended = printer.endJob();
  }
  if (Interrupt::requested()) {
    const char* outcome = printer.jobCancelled() ? " was cancelled"
                          : complete             ? " was complete before it could be cancelled"
                                                 : " was stopped before its end";
    throw Interrupted("'" + title + "'" + where + outcome);
  }
  if (!readingFailed.empty()) {
    throw Failure(readingFailed + "; the job was cancelled");
  }
  require(result, "cannot write '" + title + "'" + where);
  if (printer.jobCancelled()) {
    throw Failure("'" + title + "' was rejected or cancelled by the printer");
  }
  require(ended, "cannot end '" + title + "'" + where);
  return done;
}

void print(const Options& options) {
  Interrupt::install();
  const Session session;
  const Device device = selectPrinter(session, options.device);
  const bool endsWithMarker = isCpdPrinter(session, device);
  JobNames names = jobNames(session, device, options);
  OpenPrinter printer(session, device);
  for (const std::string& name : options.files) {
    InputFile file(name);
    names.title = options.job;
    if (names.title.empty()) {
      names.title = name == "-" ? "standard input" : std::filesystem::path(name).filename().string();
    }
    const std::uint64_t bytes =
        printJob(printer, names, endsWithMarker, file, !options.quiet && standardErrorIsTerminal());
    if (!options.quiet) {
      std::cout << "printed '" << names.title << "' on " << device.text() << " (" << names.queue << "), "
                << bytes << " bytes" << std::endl;
    }
  }
}

}  // namespace

void addPrintCommand(Verb& root) {
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("print", "Print files, each as a job of its own");
  verb.addOption("FILE", options->files, "The files, sent as they are; - is standard input").required();
  verb.addOption("--device", options->device,
                 "The printer's handle or port name; not needed for the only printer");
  verb.addOption("--user", options->user, "Whose job it is; otherwise the value of USER");
  verb.addOption("--job", options->job, "The job's name; otherwise the file's");
  verb.addFlag("--quiet", options->quiet, "Say nothing unless something fails");
  verb.footer(
      "Ctrl-C cancels the job on the printer and then ends; a second Ctrl-C ends at once and leaves the\n"
      "job to the printer. On a Cpd printer a file that does not end with the end-of-job marker\n"
      "(1B 2A 82 00 00 00 00 AC) gets it, without which the printer would drop the job.\n\n"
      "Examples:\n"
      "  qvn print report.prn\n"
      "  qvn print --device LAB1 --user anna cover.pcl body.pcl\n"
      "  gs -sDEVICE=ljet4 -o - letter.pdf | qvn print --job letter -");
  verb.callback([options] { print(*options); });
}

}  // namespace qvn::cli
