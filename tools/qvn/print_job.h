// One print job, from its start to its end: progress, patience and interrupts included.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/base/clock.h"
#include "shared/client/failure.h"
#include "shared/client/job_data.h"
#include "shared/client/open_printer.h"

namespace qvn::cli {

// "60 s".
std::string inSeconds(platform::Milliseconds duration);

class PrintJob {
 public:
  // What came of a job.
  struct Outcome {
    std::uint64_t bytes = 0;
    // Whether the printer said that it came out; none where printers do not say.
    std::optional<bool> confirmed;
    // How long it was asked.
    platform::Milliseconds asked = 0;
  };

  // `patience` is how long a printer is offered data that it does not take, 0 for ever. A quiet job shows
  // neither progress nor what an interrupt leads to. Interrupt::install() has been called; all that is named
  // outlives this object.
  PrintJob(const Session& session, OpenPrinter& printer, const JobNames& names, InputFile& file,
           platform::Milliseconds patience, bool quiet);
  ~PrintJob();
  PrintJob(const PrintJob&) = delete;
  PrintJob& operator=(const PrintJob&) = delete;

  // Throws Failure, or Interrupted. Ends the process with the failure's message when a printer that is gone
  // keeps the library waiting.
  Outcome print();

 private:
  void start();
  void send();
  void check() const;

  std::string whatHappens(bool tooLate) const;
  std::string stopped() const;
  Failure timedOut() const;
  Failure writingFailed() const;
  std::string sent() const;

  const Session& session_;
  OpenPrinter& printer_;
  const JobNames& names_;
  InputFile& file_;
  const platform::Milliseconds patience_;
  const bool quiet_;
  const std::string what_;
  // How long the library asks the printer whether the job is over.
  const platform::Milliseconds longestEnd_;

  std::uint64_t read_ = 0;
  std::atomic<std::uint64_t> taken_ = 0;
  std::atomic<bool> complete_ = false;
  std::uint32_t written_ = 0;
  std::uint32_t ended_ = 0;
  std::string readingFailed_;
};

}  // namespace qvn::cli
