// The ESC commands of scanners: how each is recognised, what answers it, and how long it is. A leading H
// marks what the host sends, a leading P what the device (the peripheral) sends.
//
// A command begins with 1B and two or three letters, or 1B, F, a number and 00. Its header is 8 bytes; a
// payload may follow, whose length two header bytes give, the low one first. The meaning of the other header
// bytes is the device's.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qvn::esc {

using Bytes = std::span<const std::uint8_t>;

inline constexpr std::uint8_t kEscape = 0x1B;
inline constexpr std::size_t kHeaderLength = 8;
inline constexpr std::uint8_t kNoPayload = 0;

struct Prefix {
  std::array<std::uint8_t, kHeaderLength> bytes;
  std::uint8_t length;

  constexpr Bytes view() const { return {bytes.data(), length}; }
};

struct Command {
  const char* name;  // of the class
  std::array<std::uint8_t, kHeaderLength> header;
  std::uint8_t recognisedBy;  // so many bytes of the header
  Prefix reply;               // how a reply begins; empty when there is none
  const char* replyName;      // its class
  std::uint8_t payloadField;  // where in the header the payload's length is
  bool comesInPieces;         // may be put together from what arrives
};

inline constexpr Prefix kNoReply{{}, 0};
inline constexpr Prefix kStatus{{0x1B, 'S', 'S'}, 3};

// clang-format off
inline constexpr std::array<Command, 36> kCommands = {{
  // name                               header                recognised  reply begins with                 its class                          payload     in pieces
  {"HCopyPaperSizeSetEscCommand",       {0x1B, 'C', 'S', 'S'}, 4, {{0x1B, 'S', 'S', 0, 0, 0}, 6}, "PStatusEscCommand",                kNoPayload, false},
  {"HCopyParameterGetEscCommand",       {0x1B, 'C', 'P', 'G'}, 8, {{0x1B, 'c', 'd'}, 3},          "PCopyDataEscCommand",              kNoPayload, false},
  {"HDevCopyLockEscCommand",            {0x1B, 'D', 'C', 'L'}, 8, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HDevCopyUnlockEscCommand",          {0x1B, 'D', 'C', 'U'}, 8, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HDevNetworkScanRequestEscCommand",  {0x1B, 'D', 'H', 'R'}, 4, {{0x1B, 'F', 'h', 'r'}, 4},     "PDevNetworkScanStatusEscCommand",  kNoPayload, false},
  {"HDevParameterGetEscCommand",        {0x1B, 'D', 'P', 'G'}, 4, {{0x1B, 'd', 'p', 'g'}, 4},     "PDevParameterGetStatusEscCommand", kNoPayload, false},
  {"HDevParameterSetEscCommand",        {0x1B, 'D', 'P', 'S'}, 4, kStatus,                        "PStatusEscCommand",                6,          true},
  {"HDevScanLockEscCommand",            {0x1B, 'D', 'S', 'L'}, 8, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HDevScanUnlockEscCommand",          {0x1B, 'D', 'S', 'U'}, 8, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HScanAbortEscCommand",              {0x1B, 'S', 'A'},      8, kNoReply,                       "",                                 kNoPayload, false},
  {"HScanAdfStatusEscCommand",          {0x1B, 'S', 'F'},      8, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HScanClippingEscCommand",           {0x1B, 'S', 'M'},      3, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HScanColorFormatEscCommand",        {0x1B, 'S', 'C'},      3, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HScanDpiEscCommand",                {0x1B, 'S', 'D'},      3, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HScanGoEscCommand",                 {0x1B, 'S', 'G'},      8, kNoReply,                       "",                                 kNoPayload, false},
  {"HScanImageFilterEscCommand",        {0x1B, 'S', 'I'},      3, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HScanImageProcessingEscCommand",    {0x1B, 'S', 'J'},      3, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HScanRawEscCommand",                {0x1B, 'S', 'R'},      3, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HScanExposureTimeEscCommand",       {0x1B, 'S', 'X'},      3, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HScanOffsetEscCommand",             {0x1B, 'S', 'O'},      3, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HScanSizeEscCommand",               {0x1B, 'S', 'Z'},      3, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HScanVersionEscCommand",            {0x1B, 'S', 'V'},      8, {{0x1B, 's', 'v'}, 3},          "PScanVersionEscCommand",           kNoPayload, false},
  {"PCopyDataEscCommand",               {0x1B, 'c', 'd'},      3, kNoReply,                       "",                                 3,          true},
  {"PDevParameterGetStatusEscCommand",  {0x1B, 'd', 'p', 'g'}, 4, kNoReply,                       "",                                 6,          true},
  {"PDevNetworkScanStatusEscCommand",   {0x1B, 'F', 'h', 'r'}, 4, kNoReply,                       "",                                 kNoPayload, false},
  {"PScanDataEscCommand",               {0x1B, 's', 'd'},      3, kNoReply,                       "",                                 3,          true},
  {"PScanVersionEscCommand",            {0x1B, 's', 'v'},      3, kNoReply,                       "",                                 3,          true},
  {"PStatusEscCommand",                 {0x1B, 'S', 'S'},      3, kNoReply,                       "",                                 kNoPayload, false},
  {"HScanSmartEscCommand",              {0x1B, 'S', 'T'},      8, kStatus,                        "PStatusEscCommand",                kNoPayload, false},
  {"HFaxQueryBufferSpaceEscCommand",    {0x1B, 'F', 4, 0},     4, {{0x1B, 'F', 4, 0}, 4},         "HFaxQueryBufferSpaceEscCommand",   4,          false},
  {"HFaxAbortEscCommand",               {0x1B, 'F', 5, 0},     4, {{0x1B, 'F', 5, 0}, 4},         "HFaxAbortEscCommand",              kNoPayload, false},
  {"HFaxModemDataGetEscCommand",        {0x1B, 'F', 2, 0},     4, {{0x1B, 'F', 2, 0}, 4},         "HFaxModemDataGetEscCommand",       4,          false},
  {"HFaxModemDataSendEscCommand",       {0x1B, 'F', 1, 0},     4, {{0x1B, 'F', 1, 0}, 4},         "HFaxModemDataSendEscCommand",      4,          false},
  {"HFaxModemStatusEscCommand",         {0x1B, 'F', 3, 0},     4, {{0x1B, 'F', 3, 0}, 4},         "HFaxModemStatusEscCommand",        4,          false},
  {"HDevHostNameListSetEscCommand",     {0x1B, 'D', 'H', 'L'}, 4, {{0x1B, 'D', 'H', 'L'}, 4},     "HDevHostNameListSetEscCommand",    kNoPayload, false},
  {"HScanStatusGetEscCommand",          {0x1B, 'S', 'K', 0},   4, {{0x1B, 'S', 'K', 0}, 4},       "HScanStatusGetEscCommand",         kNoPayload, false},
}};
// clang-format on

constexpr bool beginsWith(Bytes bytes, const Prefix& prefix) {
  if (bytes.size() < prefix.length) return false;
  for (std::size_t i = 0; i < prefix.length; ++i) {
    if (bytes[i] != prefix.bytes[i]) return false;
  }
  return true;
}

// Whether the bytes begin with a whole header of some command.
constexpr bool isCommand(Bytes bytes) { return bytes.size() >= kHeaderLength && bytes[0] == kEscape; }

constexpr bool isA(Bytes bytes, const Command& command) {
  return bytes.size() >= kHeaderLength && beginsWith(bytes, {command.header, command.recognisedBy});
}

// The first of the table that the bytes are; null for fewer than 8 bytes and for commands that are not in the
// table.
constexpr const Command* find(Bytes bytes) {
  for (const Command& command : kCommands) {
    if (isA(bytes, command)) return &command;
  }
  return nullptr;
}

// A command that is not in the table has its payload's length here, and says in the other whether it wants a
// reply, which begins as the command itself.
inline constexpr std::uint8_t kOtherPayloadField = 4;
inline constexpr std::size_t kOtherReplyFlags = 6;
inline constexpr std::uint8_t kOtherWantsReply = 0x80;
inline constexpr std::size_t kOtherCodeLength = 4;

constexpr std::size_t payloadLength(Bytes bytes, std::uint8_t field) {
  if (field == kNoPayload || bytes.size() < kHeaderLength) return 0;
  return bytes[field] | std::size_t{bytes[field + 1u]} << 8;
}

// Header and payload of the command that begins so. Only with the 8 bytes of a header.
constexpr std::size_t commandLength(Bytes bytes) {
  const Command* const command = find(bytes);
  return kHeaderLength +
         payloadLength(bytes, command != nullptr ? command->payloadField : kOtherPayloadField);
}

// Whether the device answers this command of the host's.
constexpr bool expectsReply(Bytes request) {
  if (!isCommand(request)) return false;
  const Command* const command = find(request);
  return command != nullptr ? command->reply.length != 0
                            : (request[kOtherReplyFlags] & kOtherWantsReply) != 0;
}

constexpr bool isReply(Bytes request, Bytes data) {
  if (!expectsReply(request)) return false;
  const Command* const command = find(request);
  if (command != nullptr) return beginsWith(data, command->reply);
  if (data.size() < kHeaderLength) return false;
  for (std::size_t i = 0; i < kOtherCodeLength; ++i) {
    if (data[i] != request[i]) return false;
  }
  return true;
}

}  // namespace qvn::esc
