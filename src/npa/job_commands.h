// The commands of a print job: start, end, its name, completion, the device lock, the date and the cache.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "npa/npa_command.h"
#include "npa/npa_templates.h"
#include "qvn/transport/data.h"

namespace qvn {

class StartJobCommand : public NpaCommand {
 public:
  StartJobCommand() : NpaCommand(npa_template::kStartJob) {}
  // The printer job id of the reply. False, `id` untouched, when it does not match or ends before the id.
  bool getJobId(const Data& reply, std::uint32_t& id) const;
};

class EndJobCommand : public NpaCommand {
 public:
  EndJobCommand() : NpaCommand(npa_template::kEndJob) {}
  void setJobId(std::uint16_t id);
};

// Tells the printer whose job it is.
class NamePrintJobCommand : public NpaCommand {
 public:
  NamePrintJobCommand() : NpaCommand(npa_template::kNamePrintJob) {}
  // Called once. `extraFields` are inserted as they are, each ended by ";".
  void setJobInfo(std::uint16_t printerJobId, const std::string& hostName, const std::string& jobName,
                  const std::string& userName, const std::string& queue, const std::string& account,
                  const std::string& extraFields);
};

class QueryJobsCompletedCommand : public NpaCommand {
 public:
  QueryJobsCompletedCommand() : NpaCommand(npa_template::kQueryJobsCompleted) {}
  static bool isJobComplete(const Data& reply);
};

class LockDeviceCommand : public NpaCommand {
 public:
  LockDeviceCommand() : NpaCommand(npa_template::kLockDevice) {}
  // Any other matching reply means that the device is busy.
  static bool isGranted(const Data& reply);
};

class UnlockDeviceCommand : public NpaCommand {
 public:
  UnlockDeviceCommand() : NpaCommand(npa_template::kUnlockDevice) {}
};

class SetLastDateCommand : public NpaCommand {
 public:
  static constexpr std::size_t kHostIdLength = 6;
  using HostId = std::array<std::uint8_t, kHostIdLength>;

  SetLastDateCommand() : NpaCommand(npa_template::kSetLastDate) {}
  // Whole days since 2002-01-01 00:00:00 UTC; 0 for an earlier time.
  static std::uint32_t dayCount(std::int64_t secondsSince1970);
  // The low 16 bits count.
  void setDate(std::uint32_t dayCount);
  void setHostId(const HostId& hostId);
};

class GetCacheCommand : public NpaCommand {
 public:
  GetCacheCommand() : NpaCommand(npa_template::kGetCache) {}
  bool isReplyTo(const Data& reply) const override;
  // Whether the packet is this command byte for byte.
  static bool isRequest(const Data& packet);
};

}  // namespace qvn
