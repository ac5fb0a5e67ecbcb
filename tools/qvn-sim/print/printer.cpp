#include "print/printer.h"

#include <array>
#include <utility>

namespace sim {
namespace {

constexpr std::array<std::uint8_t, 3> kNpaRevisions = {0x02, 0x01, 0x00};
constexpr std::uint16_t kMaxPacketSize = 1024;

// The lines of a parallel port that tell the status.
constexpr std::uint8_t kPaperEmpty = 0x20;
constexpr std::uint8_t kSelected = 0x10;
constexpr std::uint8_t kNoError = 0x08;

// What a bit of the status changes of the lines of a printer that is ready.
struct PortCondition {
  std::uint16_t bit;
  std::uint8_t raised;
  std::uint8_t lowered;
};
constexpr PortCondition kPortConditions[] = {
    {0x4000, kPaperEmpty, kNoError},  // out of paper
    {0x1000, 0, kNoError},            // out of toner
    {0x0800, 0, kNoError},            // cover open
    {0x0400, 0, kNoError},            // paper jam
    {0x0200, 0, kSelected},           // offline
};

// The reply to a command with nothing to tell: its first `length` bytes again.
Bytes acknowledge(ByteView packet, std::size_t length) {
  return npa::makePacket(npa::kReplyFlags, packet.subspan(npa::kCommand, length - npa::kCommand));
}

}  // namespace

Printer::Printer(JobQueue& jobs, const FaultSwitches& faults, std::function<void()> readPrintData)
    : jobs_(jobs), faults_(faults), readPrintData_(std::move(readPrintData)) {}

Bytes Printer::answer(ConnectionId from, npa::Command command, ByteView packet) {
  using npa::Command;
  Host& host = hosts_[from];
  if (host.alerts.apply(command, packet)) return acknowledge(packet, npa::entryOf(command).shortest);
  switch (command) {
    case Command::Summary: {
      Bytes reply =
          npa::makePacket(npa::kReplyFlags, packet.subspan(npa::kCommand, 2), npa::kSummaryReplyLength);
      std::copy(kNpaRevisions.begin(), kNpaRevisions.end(), reply.begin() + npa::kParameters);
      npa::writeBig16(reply, npa::kMaxPacketSizeOffset, kMaxPacketSize);
      return reply;
    }
    case Command::StartJob: {
      if (jobs_.endsInSilence()) readPrintData_();
      host.job = jobs_.start();
      Bytes reply = acknowledge(packet, npa::entryOf(command).shortest);
      npa::writeBig16(reply, npa::kJobIdOffset, host.job);
      return reply;
    }
    case Command::EndJob: {
      if (!jobs_.announceEnd(npa::readBig16(packet, npa::kJobIdOffset))) return reject(packet);
      readPrintData_();
      return acknowledge(packet, npa::entryOf(command).shortest);
    }
    case Command::JobsCompleted:
      readPrintData_();
      return npa::makePacket(
          npa::kReplyFlags, packet.subspan(npa::kCommand, 2),
          jobs_.isPrinted(host.job) ? npa::kJobCompleteReplyLength : npa::kJobPendingReplyLength);
    case Command::NameJob: {
      const std::size_t length = packet[npa::kNameLengthOffset];
      if (length == 0 || npa::kNameOffset + length > packet.size()) return reject(packet);
      const ByteView name = packet.subspan(npa::kNameOffset, length - 1);
      jobs_.setName(npa::readBig16(packet, npa::kNamedJobIdOffset), std::string(name.begin(), name.end()));
      return acknowledge(packet, npa::kNameLengthOffset);
    }
    case Command::Lock:
      return lock(from);
    case Command::Unlock:
      if (lockedBy_ == from) lockedBy_.reset();
      return acknowledge(packet, npa::entryOf(command).shortest);
    case Command::Cache:
      return cache();
    default:
      return acknowledge(packet, npa::kCommand + npa::entryOf(command).patternLength);
  }
}

Bytes Printer::reject(ByteView packet) {
  return npa::makePacket(npa::kRejectFlags, packet.subspan(npa::kCommand, packet.size() > 5 ? 2 : 1));
}

bool Printer::wantsAlert(ConnectionId host, ByteView alert) const {
  const auto known = hosts_.find(host);
  return (known == hosts_.end() ? AlertRegistration() : known->second.alerts).covers(alert);
}

bool Printer::wantsJobStatus(ConnectionId host) const {
  const auto known = hosts_.find(host);
  return known != hosts_.end() && known->second.alerts.coversJobs();
}

void Printer::connectionClosed(ConnectionId host) {
  const auto known = hosts_.find(host);
  if (known == hosts_.end()) return;
  const std::uint16_t job = known->second.job;
  hosts_.erase(known);
  if (lockedBy_ == host) lockedBy_.reset();
  if (job == 0) return;
  readPrintData_();
  jobs_.abandon(job);
}

Bytes Printer::setStatus(std::uint8_t busy, std::uint16_t status) {
  busy_ = busy;
  status_ = status;
  Bytes alert = npa::makePacket(npa::kNotARequest, npa::kStatusAlert, npa::kStatusAlertEntries);
  appendStatusEntries(alert);
  npa::writeBig16(alert, 1, static_cast<std::uint16_t>(alert.size() - npa::kUncounted));
  return alert;
}

std::uint8_t Printer::portStatus() const {
  std::uint8_t raised = kSelected | kNoError;
  std::uint8_t lowered = 0;
  for (const PortCondition& condition : kPortConditions) {
    if ((status_ & condition.bit) == 0) continue;
    raised |= condition.raised;
    lowered |= condition.lowered;
  }
  return static_cast<std::uint8_t>(raised & ~lowered);
}

Bytes Printer::reset() {
  hosts_.clear();
  lockedBy_.reset();
  return npa::makePacket(npa::kNotARequest, npa::kPowerOnReset);
}

Bytes Printer::cancelAcknowledge() { return npa::makePacket(npa::kNotARequest, npa::kCancelAcknowledge); }

Bytes Printer::lock(ConnectionId from) {
  constexpr std::array<std::uint8_t, 4> kLocked = {0xE0, 0x82, 0x02, 0x01};
  const bool granted = !faults_.busy() && (!lockedBy_ || lockedBy_ == from);
  if (granted) lockedBy_ = from;
  Bytes reply = npa::makePacket(npa::kReplyFlags, kLocked, npa::kLockGrantOffset + 1);
  reply[npa::kLockGrantOffset] = granted ? 0 : 1;
  return reply;
}

Bytes Printer::cache() const {
  Bytes reply = npa::makePacket(npa::kReplyFlags, npa::kCacheReply, npa::kCacheEntries);
  appendStatusEntries(reply);
  npa::writeBig16(reply, 1, static_cast<std::uint16_t>(reply.size() - npa::kUncounted));
  return reply;
}

void Printer::appendStatusEntries(Bytes& packet) const {
  const auto entry = [&packet](std::uint16_t id, std::initializer_list<std::uint8_t> data) {
    packet.push_back(static_cast<std::uint8_t>(id >> 8));
    packet.push_back(static_cast<std::uint8_t>(id & 0xFF));
    packet.push_back(static_cast<std::uint8_t>(data.size()));
    packet.insert(packet.end(), data);
  };
  entry(npa::kBusyEntry, {busy_});
  entry(npa::kStatusEntry,
        {static_cast<std::uint8_t>(status_ >> 8), static_cast<std::uint8_t>(status_ & 0xFF)});
}

}  // namespace sim
