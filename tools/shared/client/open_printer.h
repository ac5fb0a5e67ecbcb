// A printer that is open and heard, and the steps of a job as every tool takes them. One at a time in a
// process.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

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

  // Writes the block, offering again what the printer does not take; stops early when a stop is requested
  // (interrupt.h). Returns the code of the first failure, else 0.
  std::uint32_t write(const std::string& block);

  // Works from any thread, also while the job is being ended. A printer without a way to cancel a job (Bpd)
  // prints what it was given so far.
  void cancelJob();

  std::uint32_t endJob();

  // Whether the job in hand was cancelled, by this side or the printer's, or rejected.
  bool jobCancelled() const { return jobCancelled_; }
  // Whether the printer refuses the job's data just now.
  bool inError() const { return inError_; }

 private:
  static void onNotification(std::uint32_t, std::uint32_t category, std::uint32_t id, const std::uint8_t*,
                             std::uint32_t, std::uint32_t);
  void hear(JobEvent event);

  std::uint32_t client_;
  Device printer_;
  bool cancels_;
  Listener listener_;
  std::atomic<bool> jobCancelled_{false};
  std::atomic<bool> inError_{false};
};

// Whether the printer's jobs can be cancelled, and their data must end with the end-of-job marker.
bool isCpdPrinter(const Session& session, const Device& printer);

}  // namespace qvn::cli
