#include "npa/job_commands.h"

#include <algorithm>

#include "common/byte_reader.h"
#include "common/logging/basic_logger.h"
#include "npa/npa_packet.h"

namespace qvn {
namespace {

constexpr std::size_t kJobIdOffset = 7;
constexpr std::size_t kNameJobIdOffset = 6;
constexpr std::size_t kNameTextLengthOffset = 8;
// What the length field counts besides the text: flags to text length, and the text's terminator.
constexpr std::size_t kNameCountedBytes = 7;
constexpr std::size_t kDayCountOffset = 8;
constexpr std::size_t kHostIdOffset = 10;
constexpr std::size_t kCompleteReplyLength = 26;
constexpr std::size_t kShortestCacheReply = 10;

constexpr std::int64_t kFirstDay = 1009843200;  // 2002-01-01 00:00:00 UTC
constexpr std::int64_t kSecondsPerDay = 86400;

}  // namespace

bool StartJobCommand::getJobId(const Data& reply, std::uint32_t& id) const {
  const auto found = ByteReader(reply).u16(kJobIdOffset);
  if (!isReplyTo(reply) || !found.has_value()) return false;
  id = *found;
  return true;
}

void EndJobCommand::setJobId(std::uint16_t id) { patch16(kJobIdOffset, id); }

void NamePrintJobCommand::setJobInfo(std::uint16_t printerJobId, const std::string& hostName,
                                     const std::string& jobName, const std::string& userName,
                                     const std::string& queue, const std::string& account,
                                     const std::string& extraFields) {
  const std::string text = "HT:" + hostName + ";UR:" + userName + ";" + extraFields + "JN:" + jobName +
                           ";QU:" + queue + ";AN:" + account + ";";
  logDetail(log_component::server(),
            [&] { return LogText() << "NamePrintJobCommand::setJobInfo()) " << text; });
  patch16(kNameJobIdOffset, printerJobId);
  patch8(kNameTextLengthOffset, static_cast<std::uint8_t>(text.size() + 1));
  patch16(npa::kLengthOffset, static_cast<std::uint16_t>(text.size() + kNameCountedBytes));
  packet().append(text.c_str(), static_cast<std::uint32_t>(text.size() + 1));
}

bool QueryJobsCompletedCommand::isJobComplete(const Data& reply) {
  return reply.getLength() == kCompleteReplyLength;
}

bool LockDeviceCommand::isGranted(const Data& reply) {
  const ByteReader bytes(reply);
  return bytes.length() == 9 && bytes.has(npa::kCommandOffset, {0xE0, 0x82, 0x02, 0x01}) && bytes.u8(8) == 0;
}

std::uint32_t SetLastDateCommand::dayCount(std::int64_t secondsSince1970) {
  if (secondsSince1970 < kFirstDay) return 0;
  return static_cast<std::uint32_t>((secondsSince1970 - kFirstDay) / kSecondsPerDay);
}

void SetLastDateCommand::setDate(std::uint32_t dayCount) {
  patch16(kDayCountOffset, static_cast<std::uint16_t>(dayCount));
}

void SetLastDateCommand::setHostId(const HostId& hostId) {
  for (std::size_t i = 0; i < hostId.size(); ++i) patch8(kHostIdOffset + i, hostId[i]);
}

bool GetCacheCommand::isReplyTo(const Data& reply) const {
  return reply.getLength() >= kShortestCacheReply && NpaCommand::isReplyTo(reply);
}

bool GetCacheCommand::isRequest(const Data& packet) {
  return packet.getLength() == npa_template::kGetCache.size() &&
         std::equal(npa_template::kGetCache.begin(), npa_template::kGetCache.end(), packet.getBuffer());
}

}  // namespace qvn
