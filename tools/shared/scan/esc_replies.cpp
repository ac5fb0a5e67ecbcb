#include "shared/scan/esc_replies.h"

#include <algorithm>

#include "shared/scan/error.h"
#include "shared/scan/esc_requests.h"

namespace qvn::scan {

namespace {

constexpr std::uint8_t kStatusPrefix[] = {0x1B, 'S', 'S'};
constexpr std::uint8_t kVersionPrefix[] = {0x1B, 's', 'v'};
constexpr std::uint8_t kDataPrefix[] = {0x1B, 's', 'd'};

constexpr std::size_t kStatusCode = 3;
constexpr std::size_t kPayloadLength = 3;
constexpr std::size_t kPageNumber = 5;
constexpr std::size_t kBlockNumber = 6;

enum class StatusCode : std::uint8_t {
  Good = 0x00,
  Busy = 0x01,
  Refused = 0x02,
  Aborted = 0x03,
  NoSheet = 0x05,
  ConnectionLost = 0x0B,  // the library's own
};

bool begins(Bytes command, std::span<const std::uint8_t> prefix) {
  return command.size() >= kHeaderLength && std::equal(prefix.begin(), prefix.end(), command.begin());
}

// Only within a header that is there.
std::uint16_t number16(Bytes command, std::size_t offset) {
  return static_cast<std::uint16_t>(command[offset] | command[offset + 1] << 8);
}

Bytes payloadOf(Bytes command, std::span<const std::uint8_t> prefix, const std::string& what) {
  if (!begins(command, prefix)) {
    throw Error(Problem::BadAnswer, "the scanner sent something else than " + what);
  }
  const Bytes payload = command.subspan(kHeaderLength);
  const std::size_t promised = number16(command, kPayloadLength);
  if (payload.size() != promised) {
    throw Error(Problem::BadAnswer, "the scanner sent " + what + " of " + std::to_string(payload.size()) +
                                        " bytes that says it has " + std::to_string(promised));
  }
  return payload;
}

}  // namespace

bool isStatus(Bytes command) { return begins(command, kStatusPrefix); }

void requireGood(Bytes status, const std::string& what) {
  if (!isStatus(status)) {
    throw Error(Problem::BadAnswer, "the scanner sent no status for " + what);
  }
  switch (static_cast<StatusCode>(status[kStatusCode])) {
    case StatusCode::Good:
      return;
    case StatusCode::Busy:
      throw Error(Problem::Busy, "the scanner is busy with another host");
    case StatusCode::Refused:
      throw Error(Problem::Refused, "the scanner refuses " + what);
    case StatusCode::Aborted:
      throw Error(Problem::Aborted, "the scan was aborted at the scanner");
    case StatusCode::NoSheet:
      throw Error(Problem::NoSheet, "there is no sheet in the feeder");
    case StatusCode::ConnectionLost:
      throw Error(Problem::ConnectionLost, "the connection to the scanner was lost");
  }
  throw Error(Problem::BadAnswer,
              "the scanner answers status " + std::to_string(status[kStatusCode]) + " to " + what);
}

std::string versionText(Bytes reply) {
  const Bytes text = payloadOf(reply, kVersionPrefix, "a description of itself");
  return std::string(text.begin(), text.end());
}

DataBlock dataBlock(Bytes command) {
  const Bytes payload = payloadOf(command, kDataPrefix, "a block of the page");
  return {command[kPageNumber], number16(command, kBlockNumber), payload};
}

}  // namespace qvn::scan
