// The layouts of USB/IP 1.1.1 that an importer needs, in the order of the bytes on the wire, all numbers
// big-endian.
#pragma once

#include <arpa/inet.h>

#include <cstdint>

namespace qvn::usbfs::usbip {

class Big16 {
 public:
  Big16(std::uint16_t value = 0) : bytes_(htons(value)) {}
  operator std::uint16_t() const { return ntohs(bytes_); }

 private:
  std::uint16_t bytes_;
};

class Big32 {
 public:
  Big32(std::uint32_t value = 0) : bytes_(htonl(value)) {}
  operator std::uint32_t() const { return ntohl(bytes_); }

 private:
  std::uint32_t bytes_;
};

constexpr std::uint16_t kVersion = 0x0111;
constexpr std::uint16_t kRequestImport = 0x8003;
constexpr std::uint16_t kReplyImport = 0x0003;

struct Operation {
  Big16 version;
  Big16 code;
  Big32 status;
};

struct ImportRequest {
  Operation operation;
  char busId[32];
};

struct ImportedDevice {
  char path[256];
  char busId[32];
  Big32 bus;
  Big32 device;
  Big32 speed;
  Big16 vendor;
  Big16 product;
  Big16 version;
  std::uint8_t classes[3];
  std::uint8_t configuration;
  std::uint8_t configurations;
  std::uint8_t interfaces;
};
static_assert(sizeof(ImportedDevice) == 312);

enum Command : std::uint32_t { kSubmit = 1, kUnlink = 2, kSubmitted = 3, kUnlinked = 4 };
constexpr std::uint32_t kZeroPacketFlag = 0x0040;
constexpr std::uint32_t kDirectionInFlag = 0x0200;

struct Header {
  Big32 command;
  Big32 sequence;
  Big32 device;
  Big32 direction;  // 1: in
  Big32 endpoint;
  // Submit: flags, length, then as below. Unlink: the sequence number of what is unlinked. Replies: the
  // status, and how much was transferred.
  Big32 first;
  Big32 second;
  Big32 startFrame;
  Big32 packets;
  Big32 interval;
  std::uint8_t setup[8];
};
static_assert(sizeof(Header) == 48);

}  // namespace qvn::usbfs::usbip
