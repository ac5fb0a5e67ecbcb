// A host that imports the simulated device by USB/IP.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "support/simulator/simulator_process.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {

inline constexpr int kStalled = -32;
inline constexpr int kOverflow = -75;
inline constexpr int kCancelled = -104;

// What became of a transfer.
struct UsbResult {
  int status = 0;
  std::size_t length = 0;  // that was transferred
  Bytes data;              // that came in
};

class UsbipHost {
 public:
  // Imports it; throws std::runtime_error when the device refuses.
  explicit UsbipHost(const SimulatorProcess& device);

  // Begins a transfer and gives its number: of data to an endpoint, or for at most `length` bytes from one.
  std::uint32_t beginOut(std::uint8_t endpoint, const Bytes& data, std::uint32_t flags = 0);
  std::uint32_t beginIn(std::uint8_t endpoint, std::uint32_t length, std::uint32_t flags = 0);
  // Waits for its end.
  UsbResult end(std::uint32_t number);
  // Takes it back; gives the status of that, and the transfer's end where the device tells one.
  std::pair<int, std::optional<UsbResult>> unlink(std::uint32_t number);

  UsbResult out(std::uint8_t endpoint, const Bytes& data, std::uint32_t flags = 0) {
    return end(beginOut(endpoint, data, flags));
  }
  UsbResult in(std::uint8_t endpoint, std::uint32_t length, std::uint32_t flags = 0) {
    return end(beginIn(endpoint, length, flags));
  }
  // A control request without data, or one that is answered: its eight bytes in hexadecimal.
  UsbResult control(std::string_view setup);
  // The answer in hexadecimal, or "stall".
  std::string ask(std::string_view setup);
  void selectPackets() { control("01 0B 01 00 00 00 00 00"); }
  void clearHalt(std::uint8_t endpoint);

  Stream& stream() { return stream_; }

 private:
  std::uint32_t begin(std::uint32_t code, std::uint8_t endpoint, const Bytes& part, const Bytes& data);
  // The next answer; whether it is to an unlinking.
  bool receive();

  Stream stream_;
  std::uint32_t lastNumber_ = 0;
  std::map<std::uint32_t, std::uint8_t> endpoints_;  // of transfers
  std::map<std::uint32_t, UsbResult> ended_;
};

// A question as a host sends it before it imports a device.
Bytes usbipQuestion(std::uint16_t code, std::string_view busId);
// Numbers of 32 bits, big-endian.
Bytes bigEndian(std::initializer_list<std::uint32_t> numbers);

}  // namespace qvn::test
