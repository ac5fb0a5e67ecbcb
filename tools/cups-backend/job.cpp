#include "job.h"

#include <cups/cups.h>

#include <cstdlib>

#include "platform/process/system_information.h"
#include "shared/client/failure.h"
#include "shared/client/text_values.h"

namespace qvn::cups {

namespace {

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::uint32_t number(const char* what, const char* text) {
  const auto value = cli::parseNumber(text);
  if (!value) throw cli::UsageError(std::string("the ") + what + " '" + text + "' is no number");
  return *value;
}

// The scheduler knows where a job comes from; without it, it comes from here.
std::string originOf(const char* options) {
  cups_option_t* parsed = nullptr;
  const int count = cupsParseOptions(options, 0, &parsed);
  const char* const told = cupsGetOption("job-originating-host-name", count, parsed);
  std::string host = told == nullptr ? "" : told;
  cupsFreeOptions(count, parsed);
  if (host.empty()) platform::computerName(host);
  return host;
}

}  // namespace

Job readJob(int argc, char** argv) {
  if (argc != 6 && argc != 7) {
    throw cli::UsageError("usage: qvn JOB USER TITLE COPIES OPTIONS [FILE]");
  }
  Job job{};
  job.id = number("job number", argv[1]);
  job.user = argv[2];
  job.title = argv[3];
  job.copies = 1;
  if (argc == 7) {
    job.copies = number("number of copies", argv[4]);
    job.file = argv[6];
  }
  if (job.copies == 0) throw cli::UsageError("no copies are asked for");
  job.queue = environment("PRINTER");
  job.host = originOf(argv[5]);
  job.device = parseDeviceUri(environment("DEVICE_URI"));
  job.inClass = !environment("CLASS").empty();
  if (job.queue.empty()) job.queue = job.device.portName;
  return job;
}

}  // namespace qvn::cups
