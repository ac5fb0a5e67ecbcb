// qvn print: files to a printer, each as a job of its own.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>

#include "commands.h"
#include "devices.h"
#include "failure.h"
#include "interrupt.h"
#include "job_data.h"
#include "platform/clock.h"
#include "platform/system_information.h"
#include "progress_bar.h"
#include "qvn/transport/attributes.h"

namespace qvn::cli {

namespace {

// How long to leave a printer alone that takes nothing now: longer each time, until it takes something.
constexpr platform::Milliseconds kShortestPause = 10;
constexpr platform::Milliseconds kLongestPause = 500;

struct Options {
  std::vector<std::string> files;
  std::string device;
  std::string user;
  std::string job;
  bool quiet = false;
};

// What the printer's notifications say about the job in hand; the callback has no argument to carry it.
std::atomic<bool> jobCancelled{false};
std::atomic<bool> printerInError{false};

void onNotification(std::uint32_t, std::uint32_t category, std::uint32_t id, const std::uint8_t*,
                    std::uint32_t, std::uint32_t) {
  constexpr std::uint32_t kPrinterJob = 1;
  constexpr std::uint32_t kBusy = 1;
  constexpr std::uint32_t kError = 2;
  constexpr std::uint32_t kCancelled = 7;
  if (category == kPrinterJob) {
    printerInError = id == kError || (printerInError && id != kBusy);
    jobCancelled = jobCancelled || id == kCancelled;
  }
}

// The printer, open for this client and heard.
class OpenPrinter {
 public:
  OpenPrinter(const Session& session, const Device& printer) : client_(session.client()), printer_(printer) {
    require(QvnOpenPrinter(client_, printer_.handle), "cannot open " + printer_.text());
    // A printer that does not tell leaves only the results of the calls to go by.
    QvnRegisterForNotificationsPrinter(client_, printer_.handle, 1, onNotification);
  }
  ~OpenPrinter() {
    QvnUnregisterForNotificationsPrinter(client_, printer_.handle);
    QvnClosePrinter(client_, printer_.handle);
  }
  OpenPrinter(const OpenPrinter&) = delete;
  OpenPrinter& operator=(const OpenPrinter&) = delete;

  const Device& device() const { return printer_; }
  std::uint32_t client() const { return client_; }

 private:
  std::uint32_t client_;
  Device printer_;
};

struct JobNames {
  std::string queue;
  std::string host;
  std::string user;
  bool endsWithMarker = false;
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
  names.endsWithMarker = readText(session, printer, attribute::kDevice) == "CpdPrinter";
  return names;
}

// A mark is carried out at the end of a write, so one is made for it; what it holds is thrown away with the
// job. Works from any thread, also while the job is being ended.
void cancelJob(const OpenPrinter& printer) {
  QvnCancelJobPrinter(printer.client(), printer.device().handle);
  const std::uint8_t nothing = 0;
  std::uint32_t written = 0;
  QvnWritePrinter(printer.client(), printer.device().handle, &nothing, 1, &written);
}

// Writes the block; stops early when a stop is requested. Returns the code of the first failure, else 0.
std::uint32_t writeBlock(const OpenPrinter& printer, const std::string& block) {
  std::size_t at = 0;
  platform::Milliseconds pause = kShortestPause;
  while (at < block.size() && !Interrupt::requested()) {
    std::uint32_t written = 0;
    const std::uint32_t result = QvnWritePrinter(printer.client(), printer.device().handle,
                                                 reinterpret_cast<const std::uint8_t*>(block.data()) + at,
                                                 static_cast<std::uint32_t>(block.size() - at), &written);
    if (result != QRN_ERROR_SUCCESS && result != QRN_ERROR_INSUFFICIENT_BUFFER) {
      return result;
    }
    at += written;
    if (written == 0) {
      platform::sleep(pause);
      pause = std::min(2 * pause, kLongestPause);
    } else {
      pause = kShortestPause;
    }
  }
  return QRN_ERROR_SUCCESS;
}

// Prints the file as one job and returns the number of its bytes.
std::uint64_t printJob(const OpenPrinter& printer, const JobNames& names, const std::string& title,
                       InputFile& file, bool showProgress) {
  const auto [client, handle] = std::pair(printer.client(), printer.device().handle);
  const std::string where = " on " + printer.device().text();
  jobCancelled = false;
  printerInError = false;
  require(QvnStartJobPrinter(client, handle, 0, names.queue.c_str(), names.host.c_str(), title.c_str(),
                             names.user.c_str()),
          "cannot start '" + title + "'" + where);

  std::uint64_t done = 0;
  bool complete = false;
  std::uint32_t result = QRN_ERROR_SUCCESS;
  std::uint32_t ended = QRN_ERROR_SUCCESS;
  std::string readingFailed;
  {
    ProgressBar progress(title, file.size(), showProgress);
    OnInterrupt canceller([&] { cancelJob(printer); });
    JobData data(
        [&](char* buffer, std::size_t size) {
          const std::size_t count = file.read(buffer, size);
          done += count;
          return count;
        },
        names.endsWithMarker);
    try {
      while (result == QRN_ERROR_SUCCESS && !complete && !jobCancelled) {
        const std::string block = data.next();
        if (Interrupt::requested()) {
          break;
        }
        complete = block.empty();
        result = writeBlock(printer, block);
        progress.update(done);
        if (printerInError) {
          progress.note("the printer does not take the data; Ctrl-C cancels the job");
        }
      }
    } catch (const Failure& failure) {
      readingFailed = failure.what();
      cancelJob(printer);
    }
    canceller.settle();
    progress.note(Interrupt::requested() ? "cancelling" : "waiting for the printer");
    ended = QvnEndJobPrinter(client, handle);
  }
  if (Interrupt::requested()) {
    const char* outcome = jobCancelled ? " was cancelled"
                          : complete   ? " was complete before it could be cancelled"
                                       : " was stopped before its end";
    throw Interrupted("'" + title + "'" + where + outcome);
  }
  if (!readingFailed.empty()) {
    throw Failure(readingFailed + "; the job was cancelled");
  }
  require(result, "cannot write '" + title + "'" + where);
  if (jobCancelled) {
    throw Failure("'" + title + "' was rejected or cancelled by the printer");
  }
  require(ended, "cannot end '" + title + "'" + where);
  return done;
}

void print(const Options& options) {
  Interrupt::install();
  const Session session;
  const Device device = selectPrinter(session, options.device);
  const JobNames names = jobNames(session, device, options);
  const OpenPrinter printer(session, device);
  for (const std::string& name : options.files) {
    InputFile file(name);
    std::string title = options.job;
    if (title.empty()) {
      title = name == "-" ? "standard input" : std::filesystem::path(name).filename().string();
    }
    const std::uint64_t bytes =
        printJob(printer, names, title, file, !options.quiet && standardErrorIsTerminal());
    if (!options.quiet) {
      std::cout << "printed '" << title << "' on " << device.text() << " (" << names.queue << "), " << bytes
                << " bytes" << std::endl;
    }
  }
}

}  // namespace

void addPrintCommand(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* verb = app.add_subcommand("print", "Print files, each as a job of its own");
  verb->add_option("FILE", options->files, "The files, sent as they are; - is standard input")->required();
  verb->add_option("--device", options->device,
                   "The printer's handle or port name; not needed for the only printer");
  verb->add_option("--user", options->user, "Whose job it is; otherwise the value of USER");
  verb->add_option("--job", options->job, "The job's name; otherwise the file's");
  verb->add_flag("--quiet", options->quiet, "Say nothing unless something fails");
  verb->footer(
      "Ctrl-C cancels the job on the printer and then ends; a second Ctrl-C ends at once and leaves the\n"
      "job to the printer. On a Cpd printer a file that does not end with the end-of-job marker\n"
      "(1B 2A 82 00 00 00 00 AC) gets it, without which the printer would drop the job.\n\n"
      "Examples:\n"
      "  qvn print report.prn\n"
      "  qvn print --device LAB1 --user anna cover.pcl body.pcl\n"
      "  gs -sDEVICE=ljet4 -o - letter.pdf | qvn print --job letter -");
  verb->callback([options] { print(*options); });
}

}  // namespace qvn::cli
