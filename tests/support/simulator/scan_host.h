// A host on the scan port of the simulated device.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/simulator/simulator_process.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {

inline constexpr char kScanGo[] = "1B 53 47 00 00 00 00 00";
inline constexpr char kScanAbort[] = "1B 53 41 00 00 00 00 00";
inline constexpr char kScanGood[] = "1B 53 53 00 00 00 00 00";
inline constexpr char kScanBusy[] = "1B 53 53 01 00 00 00 00";
inline constexpr char kScanAborted[] = "1B 53 53 03 00 00 00 00";

enum class ScanFormat : std::uint8_t { BlackAndWhite, Gray, Color };

// Lengths and positions in 1/1200 inch.
struct ScanArea {
  std::uint16_t left = 0;
  std::uint16_t top = 0;
  std::uint16_t width = 10200;
  std::uint16_t height = 14040;
};

struct ScanBlock {
  std::size_t length;
  std::uint8_t page;
  std::uint16_t number;
};

struct ScannedPage {
  Bytes data;
  std::vector<ScanBlock> blocks;
  std::vector<Bytes> replies;  // what came between the blocks
  std::string status;          // in hexadecimal
};

class ScanHost {
 public:
  explicit ScanHost(const SimulatorProcess& device)
      : stream_(Stream::connect(device.address(), device.scanPort())) {}

  void send(std::string_view command) { stream_.send(hex(command)); }
  // The next message from the device, header and payload.
  Bytes receive();
  // Sends a command and gives the next message that comes, in hexadecimal.
  std::string ask(std::string_view command);
  // Throws when the device refuses.
  void set(std::uint16_t dpi, ScanFormat format, const ScanArea& area = {});
  void setSource(std::string_view source);

  // Asks for a page and takes it up to the next status.
  ScannedPage scan();
  // Takes the rest of a page up to the next status.
  ScannedPage receivePage();

  Stream& stream() { return stream_; }

 private:
  Stream stream_;
};

bool isScanData(const Bytes& message);
bool isScanStatus(const Bytes& message);

// A payload as text.
std::string textOf(const Bytes& message);

}  // namespace qvn::test
