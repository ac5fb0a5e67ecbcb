// A printer that is open and heard, and the steps of a job as every tool takes them. One at a time in a
// process.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "platform/base/clock.h"
#include "shared/client/devices.h"
#include "shared/client/session.h"

namespace qvn::cli {

// The category of the notifications about a printer's job (QvnNotificationCallback), and their ids.
inline constexpr std::uint32_t kPrinterJob = 1;
enum class JobEvent : std::uint32_t {
  Busy = 1,
  Error = 2,
  Idle = 3,
  Starting = 4,
  FirstData = 5,
  Ending = 6,
  Cancelled = 7,
  TrueEnd = 8,
};

// What the printer is told of a job.
struct JobNames {
  std::uint32_t spoolerJobId = 0;
  std::string queue;
  std::string host;
  std::string title;
  std::string user;
};

class OpenPrinter {
 public:
  using Listener = std::function<void(JobEvent)>;

  // Throws Failure when the printer cannot be opened. The listener runs on the thread whose operation it
  // hears of.
  OpenPrinter(const Session& session, const Device& printer, Listener listener = {});
  ~OpenPrinter();
  OpenPrinter(const OpenPrinter&) = delete;
  OpenPrinter& operator=(const OpenPrinter&) = delete;

  const Device& device() const { return printer_; }
  std::uint32_t client() const { return client_; }

  std::uint32_t startJob(const JobNames& names);

  // How long to go on offering data that the printer does not take, and to wait for the end of a job while it
  // takes none: 0, as long as it takes. `onItsEnd` is called once when that is over, from any thread, before
  // the job is cancelled: a printer that is gone is still offered the cancelling for a while, more than half
  // a minute.
  void setPatience(platform::Milliseconds patience, std::function<void()> onItsEnd) {
    patience_ = patience;
    onItsEnd_ = std::move(onItsEnd);
  }

  // Writes the block, offering again what the printer does not take; stops early when a stop is requested
  // (interrupt.h). Returns the code of the first failure, 1460 when patience is at its end (the job is
  // cancelled then), else 0. Each time that the printer has taken something `onTaken` is told how much.
  std::uint32_t write(const std::string& block, const std::function<void(std::size_t)>& onTaken = {});

  // Works from any thread, also while the job is being ended. A printer without a way to cancel a job (Bpd)
  // prints what it was given so far.
  void cancelJob();
  bool canCancel() const { return cancels_; }

  // Returns when the printer has told that the job is over, or has had the time to. A job whose rest the
  // printer does not take is cancelled when patience is at its end, and 1460 returned.
  std::uint32_t endJob();

  // Whether the job in hand was cancelled, by this side or the printer's, or rejected.
  bool jobCancelled() const { return jobCancelled_; }
  // The printer has all of the job's data, and there is nothing to cancel any more.
  bool hasWholeJob() const { return endBegan_ != 0; }
  // How long the printer was asked, at the end of the job, whether it is over. None where nobody asks (Bpd).
  std::optional<platform::Milliseconds> endTook() const;

 private:
  static void onNotification(std::uint32_t, std::uint32_t category, std::uint32_t id, const std::uint8_t*,
                             std::uint32_t, std::uint32_t);
  void hear(JobEvent event);
  void refuses();
  bool losesPatience();

  std::uint32_t client_;
  Device printer_;
  bool cancels_;
  Listener listener_;
  std::atomic<bool> jobCancelled_{false};
  std::atomic<bool> patienceLost_{false};
  int pieces_ = 0;               // of this job
  std::size_t piece_ = 0x10000;  // how much it is offered in one go
  // Since when it takes none of the job's data, by the platform's clock; 0 while it does.
  std::atomic<std::uint64_t> refusesSince_{0};
  std::atomic<bool> isLost_{false};  // from the notification of an error to that of a write
  std::atomic<std::uint64_t> endBegan_{0};
  std::atomic<std::uint64_t> ended_{0};
  std::function<void()> onItsEnd_;
  platform::Milliseconds patience_ = 0;
};

// Whether the printer's jobs can be cancelled, and their data must end with the end-of-job marker.
bool isCpdPrinter(const Session& session, const Device& printer);

}  // namespace qvn::cli
