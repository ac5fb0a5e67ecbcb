// The faults that the simulated device is told to have.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "documents/documents.h"
#include "esc/esc_commands.h"
#include "print/npa_packets.h"

namespace sim {

// What can go wrong with the answer to a command, and with a notification.
enum class ReplyFault : std::uint8_t {
  Delay,     // later answers wait behind this one
  Late,      // later answers overtake this one
  Drop,      // no answer
  Corrupt,   // everything after the flags inverted; a document is no XML
  Misframe,  // the length field counts 256 bytes too many
  Double,    // answered twice
  Reject,    // answered with the reject flag or an exception; the command is not carried out
  Close,     // the connection is closed instead
  WrongId,   // a document with the id of another request
  Oversize,  // a document longer than any may be
};

// What can go wrong with a scan, and the number that the fault has.
enum class ScanFault : std::uint8_t {
  StatusEarly,   // bytes of the page
  StatusLate,    // milliseconds
  StatusTwice,   // -
  StatusNever,   // -
  WrongLength,   // the block's number
  StopPage,      // bytes of the page
  CloseMidPage,  // bytes of the page
  ReadError,     // the number of blocks before it
  NoData,        // -
  IgnoreAbort,   // -
  HostModeFail,  // -
  HostModeStay,  // -
};

struct ReplyFaultName;

class FaultSwitches {
 public:
  // "NAME[=VALUE[:COMMAND][:TIMES]]", for example "drop-reply=lock:1"; docs/simulated-device.md has them all.
  // Throws std::invalid_argument with a sentence for the user.
  void add(std::string_view text);
  void clear() { *this = FaultSwitches(); }

  // Whether the fault strikes this command now, and with which delay; counts down a limited one. A packet
  // that is no known command meets only the faults of any command.
  std::optional<std::chrono::milliseconds> strike(ReplyFault fault, std::optional<npa::Command> command);
  std::optional<std::chrono::milliseconds> strike(ReplyFault fault, esc::Command command);
  std::optional<std::chrono::milliseconds> strike(ReplyFault fault, const documents::Entry& document);

  // The number of the fault when the device has it; 0 for one without. `strike` counts down a limited one.
  std::optional<std::uint64_t> valueOf(ScanFault fault) const;
  std::optional<std::uint64_t> strike(ScanFault fault);

  bool busy() const { return busy_; }
  bool neverFinish() const { return neverFinish_; }
  std::chrono::milliseconds discoveryDelay() const { return discoveryDelay_; }
  std::optional<std::uint64_t> printBytesPerSecond() const { return printBytesPerSecond_; }
  std::optional<std::uint64_t> scanBytesPerSecond() const { return scanBytesPerSecond_; }

  // The number of bytes of a job after which its connection is to be closed; counts down when `received` has
  // got there.
  bool closesJobAt(std::uint64_t received);

 private:
  // How often a fault strikes yet; as often as there is reason to when it was not limited.
  class Times {
   public:
    explicit Times(std::optional<std::uint32_t> limit) : left_(limit) {}
    bool areLeft() const { return left_ != 0u; }
    void countDown() {
      if (left_) --*left_;
    }

   private:
    std::optional<std::uint32_t> left_;
  };
  struct Entry {
    ReplyFault fault;
    std::optional<std::string_view> command;  // any when absent
    Times times;
    std::chrono::milliseconds delay{0};
  };
  struct Limited {
    std::uint64_t value;
    Times times;
  };

  class Text;

  static Entry takeEntry(Text& fault, const ReplyFaultName& known);
  std::optional<std::chrono::milliseconds> strikeNamed(ReplyFault fault, std::string_view command);

  std::vector<Entry> entries_;
  std::map<ScanFault, Limited> scanFaults_;
  std::optional<Limited> closeMidJob_;
  std::optional<std::uint64_t> printBytesPerSecond_;
  std::optional<std::uint64_t> scanBytesPerSecond_;
  std::chrono::milliseconds discoveryDelay_{0};
  bool busy_ = false;
  bool neverFinish_ = false;
};

}  // namespace sim
