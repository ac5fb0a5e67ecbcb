// The faults that the simulated device is told to have.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

// What can go wrong on the bus, and the number that the fault has.
enum class UsbFault : std::uint8_t {
  Stall,     // bytes of print data
  Unplug,    // bytes of print data
  Short,     // bytes of a packet
  Zero,      // -
  Babble,    // -
  NoId,      // -
  LittleId,  // -
  EmptyId,   // -
};

// What a fault strikes. A device has those that its ports speak.
enum class FaultTarget : std::uint8_t {
  NpaReply,
  NpaSilence,  // a packet that is not answered
  EscReply,
  MethodReply,
  Notification,
  Frame,  // of the reply to a method
  Usb,
  UsbIn,  // what comes from the device on USB, besides control requests
};

// A bit for each target.
class FaultTargets {
 public:
  constexpr FaultTargets() = default;
  constexpr FaultTargets(FaultTarget target)  // NOLINT(google-explicit-constructor): one is a set of one
      : bits_(static_cast<std::uint8_t>(1u << static_cast<unsigned>(target))) {}
  constexpr FaultTargets operator|(FaultTargets other) const {
    FaultTargets both;
    both.bits_ = bits_ | other.bits_;
    return both;
  }
  constexpr bool meet(FaultTargets other) const { return (bits_ & other.bits_) != 0; }

 private:
  std::uint8_t bits_ = 0;  // has room for the eight there are
};

constexpr FaultTargets operator|(FaultTarget one, FaultTarget other) {
  return FaultTargets(one) | FaultTargets(other);
}

// What a command's name in a fault stands for; none when there is no such command.
using FaultTargetNamed = std::optional<FaultTarget> (*)(std::string_view command);

struct ReplyFaultName;

class FaultSwitches {
 public:
  // `device`: the targets that the device has.
  FaultSwitches(FaultTargetNamed targetNamed, FaultTargets device)
      : targetNamed_(targetNamed), device_(device) {}

  // "NAME[=VALUE[:COMMAND][:TIMES]]", for example "drop-reply=lock:1"; docs/simulated-device.md has them all.
  // Throws std::invalid_argument with a sentence for the user, also for a fault that this device cannot have.
  void add(std::string_view text);
  void clear() { *this = FaultSwitches(targetNamed_, device_); }

  // Whether the fault strikes this command now, and with which delay; counts down a limited one. A command
  // without a name meets only the faults of any command.
  std::optional<std::chrono::milliseconds> strike(ReplyFault fault, std::string_view command);
  template <typename Command>
  std::optional<std::chrono::milliseconds> strike(ReplyFault fault, const Command& command) {
    return strike(fault, nameOf(command));
  }

  // The number of the fault when the device has it; 0 for one without. `strike` counts down a limited one.
  std::optional<std::uint64_t> valueOf(ScanFault fault) const;
  std::optional<std::uint64_t> strike(ScanFault fault);
  std::optional<std::uint64_t> valueOf(UsbFault fault) const;
  std::optional<std::uint64_t> strike(UsbFault fault);

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
    std::optional<std::string> command;  // any when absent
    Times times;
    std::chrono::milliseconds delay{0};
  };
  struct Limited {
    std::uint64_t value;
    Times times;
  };

  template <typename Fault>
  using Numbered = std::map<Fault, Limited>;

  class Text;

  template <typename Fault>
  static std::optional<std::uint64_t> valueIn(const Numbered<Fault>& faults, Fault fault);
  template <typename Fault>
  static std::optional<std::uint64_t> strikeIn(Numbered<Fault>& faults, Fault fault);
  template <typename Name, typename Fault>
  void addTo(Numbered<Fault>& faults, Text& fault, const Name& known) const;

  Entry takeEntry(Text& fault, const ReplyFaultName& known) const;
  void expectOneOf(const Text& fault, FaultTargets targets) const;

  FaultTargetNamed targetNamed_;
  FaultTargets device_;
  std::vector<Entry> entries_;
  Numbered<ScanFault> scanFaults_;
  Numbered<UsbFault> usbFaults_;
  std::optional<Limited> closeMidJob_;
  std::optional<std::uint64_t> printBytesPerSecond_;
  std::optional<std::uint64_t> scanBytesPerSecond_;
  std::chrono::milliseconds discoveryDelay_{0};
  bool busy_ = false;
  bool neverFinish_ = false;
};

}  // namespace sim
