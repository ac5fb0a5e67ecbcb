#include "print_job.h"

#include <algorithm>

#include "common/settings/setting_table.h"
#include "library_settings.h"
#include "progress_bar.h"
#include "shared/alerts/alert_words.h"
#include "shared/client/interrupt.h"
#include "shared/client/leave.h"

namespace qvn::cli {

namespace {

// How long a printer that took nothing, or has gone, is offered the cancelling of the job; the library would
// go on for more than half a minute.
constexpr platform::Milliseconds kFarewell = 5000;

// The class of alerts that tell of a cancelled job.
constexpr std::uint32_t kExtendedAlerts = 0x100000;

constexpr char kLost[] = "; the job is lost, print it again";

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

}  // namespace

std::string inSeconds(platform::Milliseconds duration) {
  return std::to_string((duration + 500) / 1000) + " s";
}

PrintJob::PrintJob(const Session& session, OpenPrinter& printer, const JobNames& names, InputFile& file,
                   platform::Milliseconds patience, bool quiet)
    : session_(session),
      printer_(printer),
      names_(names),
      file_(file),
      patience_(patience),
      quiet_(quiet),
      what_("'" + names.title + "' on " + printer.device().text()),
      longestEnd_(numberSetting(setting::kTeojDuration)) {}

PrintJob::~PrintJob() { QvnUnregisterForAlertsPrinter(printer_.client(), printer_.device().handle); }

PrintJob::Outcome PrintJob::print() {
  start();
  send();
  check();
  Outcome outcome{read_, std::nullopt, 0};
  if (const auto took = printer_.endTook()) {
    outcome.asked = *took;
    outcome.confirmed = *took < longestEnd_;
  }
  return outcome;
}

void PrintJob::start() {
  const LeaveOnInterrupt starting("interrupted while starting " + what_);
  acknowledged = false;
  // A printer without alerts acknowledges nothing.
  QvnRegisterForAlertsPrinter(printer_.client(), printer_.device().handle, kExtendedAlerts, onAlert);
  printer_.setPatience(patience_, [this] { leaveAfter(kFarewell, timedOut().what(), kFailedExit); });
  requireOf(session_, printer_.device(), printer_.startJob(names_), "cannot start " + what_,
            DevicePort::Print);
}

void PrintJob::send() {
  ProgressBar progress(names_.title, file_.size(), !quiet_ && standardErrorIsTerminal(),
                       "the printer does not take the data; Ctrl-C cancels the job");
  OnInterrupt canceller([&] {
    const bool tooLate = complete_ && printer_.hasWholeJob();
    if (!quiet_) sayNow(whatHappens(tooLate) + "; Ctrl-C again leaves at once");
    if (!tooLate) printer_.cancelJob();
  });
  JobData data(
      [&](char* buffer, std::size_t size) {
        const std::size_t count = file_.read(buffer, size);
        read_ += count;
        return count;
      },
      printer_.canCancel());
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
    progress.note("waiting until it has come out, at most " + inSeconds(longestEnd_));
    // Patience that is at its end has said so itself.
    const bool failed = written_ != QRN_ERROR_SUCCESS && written_ != QRN_ERROR_TIMEOUT;
    if (failed) leaveAfter(kFarewell, writingFailed().what(), kFailedExit);
  }
  ended_ = printer_.endJob();
}

void PrintJob::check() const {
  if (Interrupt::requested()) throw Interrupted(what_ + stopped());
  if (!readingFailed_.empty()) throw Failure(readingFailed_ + "; the job was cancelled");
  if (ended_ == QRN_ERROR_TIMEOUT) throw timedOut();
  if (written_ != QRN_ERROR_SUCCESS) throw writingFailed();
  if (printer_.jobCancelled()) throw Failure(what_ + " was rejected or cancelled by the printer");
  require(ended_, "cannot end " + what_);
}

// What an interrupt leads to.
std::string PrintJob::whatHappens(bool tooLate) const {
  if (!printer_.canCancel()) return "stopping; the printer prints what it was given";
  if (!tooLate) return "cancelling, which can take a minute";
  return "the printer has the whole job; waiting until it has come out, at most " + inSeconds(longestEnd_);
}

// What is known of a job that was to be stopped.
std::string PrintJob::stopped() const {
  if (acknowledged) return " was cancelled after " + sent();
  if (complete_ && !printer_.jobCancelled()) return " was complete before it could be cancelled";
  return " was stopped after " + sent() +
         (printer_.canCancel() ? "; the printer did not acknowledge that it drops what it has"
                               : "; the printer prints what it was given");
}

Failure PrintJob::timedOut() const {
  return Failure("the printer took no data for " + inSeconds(patience_) + ", after " + sent() + " of " +
                 what_ + kLost);
}

Failure PrintJob::writingFailed() const {
  if (written_ == QRN_ERROR_TIMEOUT) return timedOut();
  if (written_ != QRN_ERROR_NETNAME_DELETED) return Failure("cannot write " + what_, written_);
  return Failure("the printer closed the connection after " + sent() + " of " + what_ + kLost);
}

std::string PrintJob::sent() const {
  const auto size = file_.size();
  const std::uint64_t taken = taken_;
  return extent(size ? std::min(taken, *size) : taken, size);
}

}  // namespace qvn::cli
