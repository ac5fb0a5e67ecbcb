// The job as the scheduler hands it over: arguments and environment of the backend.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "device_uri.h"

namespace qvn::cups {

struct Job {
  std::uint32_t id;
  std::string user;
  std::string title;
  std::uint32_t copies;             // of the file; 1 for standard input, whose copies a filter has made
  std::optional<std::string> file;  // none: standard input
  std::string queue;
  std::string host;  // that the job comes from
  DeviceUri device;
  bool inClass;  // other printers could take it
};

// backend JOB USER TITLE COPIES OPTIONS [FILE], with DEVICE_URI, PRINTER and CLASS in the environment. Throws
// UsageError (failure.h) with what is wrong.
Job readJob(int argc, char** argv);

}  // namespace qvn::cups
