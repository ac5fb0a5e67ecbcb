// The faults that the simulated device is told to have.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "npa_packets.h"

namespace sim {

// What can go wrong with the answer to a command.
enum class ReplyFault : std::uint8_t {
  Delay,     // later answers wait behind this one
  Late,      // later answers overtake this one
  Drop,      // no answer
  Corrupt,   // everything after the flags inverted
  Misframe,  // the length field counts 256 bytes too many
  Double,    // answered twice
  Reject,    // answered with the reject flag; the command is not carried out
  Close,     // the connection is closed instead
};

class FaultSwitches {
 public:
  // "NAME[=VALUE[:COMMAND][:TIMES]]", for example "drop-reply=lock:1"; docs/simulated-device.md has them all.
  // Throws std::invalid_argument with a sentence for the user.
  void add(std::string_view text);
  void clear() { *this = FaultSwitches(); }

  // Whether the fault strikes this command now, and with which delay; counts down a limited one. A packet
  // that is no known command meets only the faults of any command.
  std::optional<std::chrono::milliseconds> strike(ReplyFault fault, std::optional<npa::Command> command);

  bool busy() const { return busy_; }
  bool neverFinish() const { return neverFinish_; }
  std::chrono::milliseconds discoveryDelay() const { return discoveryDelay_; }
  std::optional<std::uint64_t> printBytesPerSecond() const { return printBytesPerSecond_; }

  // The number of bytes of a job after which its connection is to be closed; counts down when `received` has
  // got there.
  bool closesJobAt(std::uint64_t received);

 private:
  struct Entry {
    ReplyFault fault;
    std::optional<npa::Command> command;  // any when absent
    std::optional<std::uint32_t> timesLeft;
    std::chrono::milliseconds delay{0};
  };
  struct CloseMidJob {
    std::uint64_t bytes;
    std::optional<std::uint32_t> timesLeft;
  };

  std::vector<Entry> entries_;
  std::optional<CloseMidJob> closeMidJob_;
  std::optional<std::uint64_t> printBytesPerSecond_;
  std::chrono::milliseconds discoveryDelay_{0};
  bool busy_ = false;
  bool neverFinish_ = false;
};

}  // namespace sim
