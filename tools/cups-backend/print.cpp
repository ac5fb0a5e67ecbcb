#include "print.h"

#include <cups/backend.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

#include "alert_states.h"
#include "device_uri.h"
#include "patience.h"
#include "platform/base/clock.h"
#include "qvn/qvn.h"
#include "qvn/result_codes.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"
#include "shared/client/job_data.h"
#include "shared/client/open_printer.h"

namespace qvn::cups {

namespace {

using cli::Failure;
using cli::Interrupt;
using cli::JobEvent;

constexpr char kConnecting[] = "connecting-to-device";
// The printer is there and takes nothing.
constexpr char kTimedOut[] = "timed-out-warning";

// The end of a job that is no success, with the exit code that tells the scheduler what to do about it.
class Unprinted : public std::runtime_error {
 public:
  Unprinted(int exitCode, const std::string& sentence) : std::runtime_error(sentence), exitCode_(exitCode) {}
  int exitCode() const { return exitCode_; }

 private:
  int exitCode_;
};

// What keeps a job from being started: whether trying again helps, and the exit code when it has not.
struct Obstacle {
  std::uint32_t code;
  bool passes;
  int exitCode;
};

constexpr std::uint32_t kModuleNotFound = 126;
constexpr std::uint32_t kEntryPointNotFound = 127;
constexpr std::uint32_t kNotAModule = 193;

constexpr Obstacle kObstacles[] = {
    // Somebody else has the printer.
    {QRN_ERROR_BUSY, true, CUPS_BACKEND_RETRY},
    {QRN_ERROR_ACCESS_DENIED, true, CUPS_BACKEND_RETRY},
    // Its transport is not there, or it is not what it was.
    {QRN_ERROR_INVALID_FUNCTION, false, CUPS_BACKEND_STOP},
    {QRN_ERROR_INVALID_HANDLE, false, CUPS_BACKEND_STOP},
    {QRN_ERROR_INVALID_PARAMETER, false, CUPS_BACKEND_STOP},
    {kModuleNotFound, false, CUPS_BACKEND_STOP},
    {kEntryPointNotFound, false, CUPS_BACKEND_STOP},
    {kNotAModule, false, CUPS_BACKEND_STOP},
};

// Everything else is a printer that cannot be reached.
constexpr Obstacle kUnreachable = {0, true, CUPS_BACKEND_FAILED};

const Obstacle& obstacleOf(std::uint32_t code) {
  for (const Obstacle& obstacle : kObstacles) {
    if (obstacle.code == code) return obstacle;
  }
  return kUnreachable;
}

cli::Device findPrinter(const cli::Session& session, const std::string& portName) {
  std::uint32_t handle = 0;
  const std::uint32_t result = QvnEnumSpecificPrinter(session.client(), portName.c_str(), &handle);
  if (result != QRN_ERROR_SUCCESS) {
    const int exitCode = result == QRN_ERROR_UNKNOWN_PORT ? CUPS_BACKEND_STOP : CUPS_BACKEND_FAILED;
    throw Unprinted(exitCode,
                    Failure("there is no printer with the port name '" + portName + "'", result).what());
  }
  return {&cli::kindNamed("printer"), handle};
}

void hear(Report& report, JobEvent event) {
  switch (event) {
    case JobEvent::Busy:
      report.setReason(kTimedOut, false);
      break;
    case JobEvent::Error:
      report.warning("the printer does not take the data");
      report.setReason(kTimedOut, true);
      break;
    case JobEvent::Starting:
      report.info("starting the job");
      break;
    case JobEvent::FirstData:
      report.info("sending the job");
      break;
    case JobEvent::Ending:
      report.info("waiting for the printer");
      break;
    case JobEvent::Cancelled:
      report.info("the job is cancelled");
      break;
    case JobEvent::TrueEnd:
      report.info("the job has ended");
      break;
    case JobEvent::Idle:
      break;
  }
}

// The printer with the job started on it.
class StartedJob {
 public:
  // Throws Failure.
  StartedJob(const cli::Session& session, const cli::Device& device, const cli::JobNames& names,
             Report& report)
      : printer_(session, device, [&report](JobEvent event) { hear(report, event); }),
        states_(printer_, report) {
    cli::requireOf(session, device, printer_.startJob(names), "cannot start the job on " + device.text(),
                   cli::DevicePort::Print);
  }

  cli::OpenPrinter& printer() { return printer_; }

 private:
  cli::OpenPrinter printer_;
  AlertStates states_;
};

bool waitUnlessStopped(platform::Milliseconds duration) {
  Interrupt::waitReadable(-1, static_cast<int>(duration));
  return !Interrupt::requested();
}

// Tries until the printer takes the job. Null when a stop was requested meanwhile.
std::unique_ptr<StartedJob> startJob(const cli::Session& session, const cli::Device& device, const Job& job,
                                     Report& report) {
  const cli::JobNames names{job.id, job.queue, job.host, job.title, job.user};
  Patience patience(job.device.patience, waitUnlessStopped);
  std::string told;
  while (!Interrupt::requested()) {
    try {
      auto started = std::make_unique<StartedJob>(session, device, names, report);
      report.setReason(kConnecting, false);
      report.forgetReasons({kConnecting, kTimedOut});
      return started;
    } catch (const Failure& failure) {
      const Obstacle& obstacle = obstacleOf(failure.code());
      // Another printer of a class need not wait for this one.
      if (!obstacle.passes || job.inClass) {
        throw Unprinted(obstacle.passes ? CUPS_BACKEND_FAILED : obstacle.exitCode, failure.what());
      }
      if (told != failure.what()) report.info(std::string(failure.what()) + "; trying again");
      told = failure.what();
      report.setReason(kConnecting, true);
      if (!patience.again() && !Interrupt::requested()) throw Unprinted(obstacle.exitCode, failure.what());
    }
  }
  return nullptr;
}

// Sends the job's data. Where the printer wants an end-of-job marker it gets one at the end of the last copy
// alone: at the end of another it would end the job there.
class Sender {
 public:
  Sender(const Job& job, bool endsWithMarker, cli::OpenPrinter& printer, Report& report)
      : job_(job), endsWithMarker_(endsWithMarker), printer_(printer), report_(report) {}

  // Returns the code of the first write that failed, else 0. Stops early when the job is cancelled or a stop
  // is requested. Throws Failure when the data cannot be read.
  std::uint32_t send() {
    for (std::uint32_t copy = 1; copy <= job_.copies && goesOn(); ++copy) {
      const std::uint32_t result = sendCopy(copy);
      if (result != QRN_ERROR_SUCCESS) return result;
    }
    return QRN_ERROR_SUCCESS;
  }

 private:
  bool goesOn() const { return !Interrupt::requested() && !printer_.jobCancelled(); }

  std::uint32_t sendCopy(std::uint32_t copy) {
    cli::InputFile file(job_.file.value_or("-"));
    cli::JobData data(
        [&](char* buffer, std::size_t size) {
          const std::size_t count = file.read(buffer, size);
          read_ += count;
          return count;
        },
        endsWithMarker_);
    const bool last = copy == job_.copies;
    std::string block = data.next();
    while (!block.empty() && goesOn()) {
      std::string next;
      if (!last) {
        next = data.next();
        if (next.empty() && endsWithMarker_) block.resize(block.size() - cli::kEndOfJobMarker.size());
      }
      const std::uint32_t result = printer_.write(block);
      if (result != QRN_ERROR_SUCCESS) return result;
      if (const auto size = file.size(); size && *size > 0) {
        // A file that grows has more than its size.
        const std::uint64_t percent = std::min<std::uint64_t>(100, read_ * 100 / (*size * job_.copies));
        report_.progress(static_cast<int>(percent));
      }
      block = last ? data.next() : std::move(next);
    }
    return QRN_ERROR_SUCCESS;
  }

  const Job& job_;
  const bool endsWithMarker_;
  cli::OpenPrinter& printer_;
  Report& report_;
  std::uint64_t read_ = 0;
};

void sendAndEnd(cli::OpenPrinter& printer, const Job& job, bool endsWithMarker, Report& report) {
  if (printer.jobCancelled()) {
    printer.endJob();
    throw Unprinted(CUPS_BACKEND_FAILED, "the printer has rejected the job");
  }
  std::uint32_t written = QRN_ERROR_SUCCESS;
  std::uint32_t ended = QRN_ERROR_SUCCESS;
  std::string readingFailed;
  {
    cli::OnInterrupt canceller([&] { printer.cancelJob(); });
    try {
      written = Sender(job, endsWithMarker, printer, report).send();
    } catch (const Failure& failure) {
      readingFailed = failure.what();
      printer.cancelJob();
    }
    canceller.settle();
    ended = printer.endJob();
  }
  if (Interrupt::requested()) return;
  if (!readingFailed.empty()) throw Unprinted(CUPS_BACKEND_FAILED, readingFailed + "; the job is cancelled");
  if (printer.jobCancelled()) throw Unprinted(CUPS_BACKEND_CANCEL, "the job was cancelled at the printer");
  const std::string where = " on " + printer.device().text();
  if (written != QRN_ERROR_SUCCESS) {
    throw Unprinted(CUPS_BACKEND_FAILED, Failure("cannot send the job" + where, written).what());
  }
  if (ended != QRN_ERROR_SUCCESS) {
    throw Unprinted(CUPS_BACKEND_FAILED, Failure("cannot end the job" + where, ended).what());
  }
}

}  // namespace

int printJob(const cli::Session& session, const Job& job, Report& report) {
  try {
    const cli::Device device = findPrinter(session, job.device.portName);
    const bool endsWithMarker = cli::isCpdPrinter(session, device);
    if (const auto started = startJob(session, device, job, report)) {
      sendAndEnd(started->printer(), job, endsWithMarker, report);
    }
  } catch (const Unprinted& unprinted) {
    report.error(unprinted.what());
    return unprinted.exitCode();
  }
  // The scheduler, which asked for the stop, knows what the job's state is.
  return CUPS_BACKEND_OK;
}

}  // namespace qvn::cups
