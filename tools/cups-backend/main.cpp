// The CUPS backend of qvn devices: without arguments it lists printers, with a job it prints it.
#include <cups/backend.h>
#include <signal.h>
#include <unistd.h>

#include <exception>

#include "device_listing.h"
#include "job.h"
#include "print.h"
#include "report.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"
#include "shared/client/session.h"

int main(int argc, char** argv) {
  using namespace qvn;
  // Whoever reads what is told may be gone; the job need not end with that.
  signal(SIGPIPE, SIG_IGN);
  cups::Report report(STDERR_FILENO);
  try {
    if (argc == 1) {
      cups::listDevices(cli::Session());
      return CUPS_BACKEND_OK;
    }
    cli::Interrupt::install();
    const cups::Job job = cups::readJob(argc, argv);
    return cups::printJob(cli::Session(), job, report);
  } catch (const cli::UsageError& error) {
    report.error(error.what());
    return CUPS_BACKEND_STOP;
  } catch (const std::exception& error) {
    report.error(error.what());
    return CUPS_BACKEND_FAILED;
  }
}
