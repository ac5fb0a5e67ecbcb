// JobDescription: the print job that a printer works on.
#pragma once

#include <cstdint>
#include <string>

#include "qvn/transport/critical_section.h"

namespace qvn {

// What the client says of a job when it starts it.
struct JobRequest {
  std::uint32_t spoolerJobId = 0;
  std::string queueName;
  std::string hostName;
  std::string jobName;
  std::string userName;
};

// One per printer, reused by every job. The state that works on the job changes it under the printer's state
// lock; its own lock lets other threads read it.
class JobDescription {
 public:
  // A new job: nothing sent, no printer job id. An empty user name becomes a single blank.
  void start(const JobRequest& request);
  JobRequest request() const;

  // The id that the printer gave the job; 0 when it has none.
  void setPrinterJobId(std::uint32_t id);
  std::uint32_t printerJobId() const;

  void setAccountNumber(const std::string& account);
  std::string accountNumber() const;

  void setDataSent();
  bool isDataSent() const;

  // Whether the data sent so far ends with the end-of-job marker.
  void setComplete(bool complete);
  bool isComplete() const;

 private:
  mutable CriticalSection lock_;
  JobRequest request_;
  std::uint32_t printerJobId_ = 0;
  std::string accountNumber_;
  bool complete_ = false;
  bool dataSent_ = false;
};

}  // namespace qvn
