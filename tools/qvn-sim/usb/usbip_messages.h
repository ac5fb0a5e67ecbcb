// The messages of USB/IP 1.1.1, as the documentation of the Linux kernel has them (Documentation/usb/
// usbip_protocol). All numbers are big-endian.
//
//   a question before a device is imported         a command afterwards
//   offset 0     version, 0111                     offset 0     code
//          2     code                                     4     sequence number
//          4     status                                   8     device
//          8     bus id, 32 bytes: of an import           12    direction, 0 out, 1 in
//                                                         16    endpoint
//                                                         20    28 bytes by the code; behind them, of a
//                                                               submission going out, its data
//
//   of a submission         of an unlinking          of what was submitted      of what was unlinked
//   20    flags             20    sequence number    20    status               20    status
//   24    length                                     24    length
//   28    start frame                                28    start frame
//   32    packets                                    32    packets
//   36    interval                                   36    errors
//   40    setup, 8 bytes
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/bytes.h"
#include "usb/descriptors.h"
#include "usb/transfer.h"

namespace sim::usb::usbip {

inline constexpr std::uint16_t kVersion = 0x0111;
inline constexpr std::string_view kBusId = "1-1";
inline constexpr std::size_t kQuestionHeader = 8;
inline constexpr std::size_t kBusIdLength = 32;
inline constexpr std::size_t kCommandLength = 48;

// No transfer is longer.
inline constexpr std::uint32_t kLongestTransfer = std::uint32_t{1} << 20;

enum class QuestionCode : std::uint16_t { Devices = 0x8005, Import = 0x8003 };

struct Question {
  QuestionCode code;
  bool isForTheDevice;  // an import of its bus id
};

// How many bytes the question has that begins so; only its header where there is no such question.
std::size_t questionLength(ByteView header);
// Nothing when it is none.
std::optional<Question> readQuestion(ByteView message);

// `device` is null when none is plugged.
Bytes devicesAnswer(const Description* device);
Bytes importAnswer(const Description* device);

enum class CommandCode : std::uint32_t { Submit = 1, Unlink = 2 };

struct Command {
  CommandCode code;
  std::uint32_t sequence;
  std::uint8_t endpoint;  // its address
  std::uint32_t flags;    // from here on of a submission
  std::uint32_t length;
  std::array<std::uint8_t, 8> setup;
  ByteView data;
  std::uint32_t unlinked;  // of an unlinking: a sequence number
};

inline constexpr std::uint32_t kMustBeFull = 0x01;
inline constexpr std::uint32_t kEndsWithZeroPacket = 0x40;

// How many bytes the command has that begins so, its data counted where that is not too long.
std::size_t commandLength(ByteView header);
// Nothing when it is none, or one that no endpoint of the device takes: isochronous, or with too much data.
std::optional<Command> readCommand(ByteView message);

Bytes submitAnswer(const Transfer& transfer);
Bytes unlinkAnswer(std::uint32_t sequence, Status status);

}  // namespace sim::usb::usbip
