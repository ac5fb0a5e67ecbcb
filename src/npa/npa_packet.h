// The layout of an NPA packet (IEEE 1284.1) and the questions that can be asked of one.
//
//   offset 0   start of packet, 0xA5
//          1   length: the number of bytes after this field, high byte first
//          3   flags
//          4   command
//          5   sub-command, where the command has one
//          6   parameters
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/byte_reader.h"
#include "qvn/transport/data.h"

namespace qvn {

namespace npa {

inline constexpr std::uint8_t kStartOfPacket = 0xA5;

inline constexpr std::size_t kLengthOffset = 1;
inline constexpr std::size_t kFlagsOffset = 3;
inline constexpr std::size_t kCommandOffset = 4;
inline constexpr std::size_t kSubCommandOffset = 5;
inline constexpr std::size_t kParametersOffset = 6;

// What the length field does not count: the start of packet and the field itself.
inline constexpr std::size_t kUncountedBytes = 3;
inline constexpr std::size_t kShortestPacket = kCommandOffset + 1;
inline constexpr std::size_t kShortestAlert = 8;

inline constexpr std::uint8_t kRejectedFlag = 0x80;
inline constexpr std::uint8_t kNotARequestFlag = 0x20;

inline constexpr std::uint8_t kJobCommand = 0x05;
inline constexpr std::uint8_t kStartJob = 0x00;
inline constexpr std::uint8_t kEndJob = 0x01;
inline constexpr std::uint8_t kVendorCommand = 0xE0;
inline constexpr std::uint8_t kExtendedAlerts = 0x73;
inline constexpr std::uint8_t kCacheSubCommand = 0x81;
inline constexpr std::uint8_t kCacheReply = 0xF0;
inline constexpr std::uint8_t kAlertCommands = 0xF0;

// A packet that the device sends unasked.
inline bool isAlert(const ByteReader& packet) {
  return packet.u8(0) == kStartOfPacket && packet.length() >= kShortestAlert &&
         (packet.u8(kCommandOffset).value_or(0) & 0xF0) == kAlertCommands;
}

}  // namespace npa

// A view of bytes that may be a packet; any bytes may be looked at.
class NpaPacket {
 public:
  explicit NpaPacket(const Data& data) : reader_(data) {}
  NpaPacket(const std::uint8_t* bytes, std::size_t length) : reader_(bytes, length) {}

  std::size_t length() const { return reader_.length(); }
  const ByteReader& bytes() const { return reader_; }

  bool isNpa() const;
  bool isLengthConsistent() const;
  bool isValidRequest() const;
  // A reply with which the device refuses a command.
  bool isRejected() const;
  bool isAlert() const { return npa::isAlert(reader_); }

  // Whether this is the reply to `request`.
  bool isReplyTo(const NpaPacket& request) const;

  // Whether a client may send this packet: job start and end belong to the job handling, the registration for
  // extended alerts to the alert task.
  bool isAllowedFromClient() const;

 private:
  bool flag(std::uint8_t bit) const;

  ByteReader reader_;
};

}  // namespace qvn
