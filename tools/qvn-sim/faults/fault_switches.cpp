#include "faults/fault_switches.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <stdexcept>

namespace sim {

struct ReplyFaultName {
  std::string_view name;
  ReplyFault fault;
  bool takesDelay;
  FaultTargets targets;
};

namespace {

constexpr FaultTargets kNpa = FaultTarget::NpaReply;
constexpr FaultTargets kEsc = FaultTarget::EscReply;
constexpr FaultTargets kMethod = FaultTarget::MethodReply;
constexpr FaultTargets kNotification = FaultTarget::Notification;
constexpr FaultTargets kScanner = kEsc | kMethod;

constexpr std::array kReplyFaults = {
    ReplyFaultName{"delay-reply", ReplyFault::Delay, true, kNpa | kScanner | kNotification},
    ReplyFaultName{"late-reply", ReplyFault::Late, true, kNpa | kMethod | kNotification},
    ReplyFaultName{"drop-reply", ReplyFault::Drop, false, kNpa | kScanner | kNotification},
    ReplyFaultName{"corrupt-reply", ReplyFault::Corrupt, false, kNpa | kMethod | kNotification},
    ReplyFaultName{"misframe-reply", ReplyFault::Misframe, false, kNpa | FaultTarget::Frame},
    ReplyFaultName{"double-reply", ReplyFault::Double, false, kNpa | kScanner | kNotification},
    ReplyFaultName{"oversize-reply", ReplyFault::Oversize, false, kMethod | kNotification},
    ReplyFaultName{"wrong-id", ReplyFault::WrongId, false, kMethod},
    ReplyFaultName{"reject", ReplyFault::Reject, false, kNpa | kMethod},
    ReplyFaultName{"close-bidi", ReplyFault::Close, false, kNpa | FaultTarget::NpaSilence | kScanner},
};

template <typename Fault>
struct NumberedFaultName {
  std::string_view name;
  Fault fault;
  const char* value;  // what its number is; none when it has none
  FaultTargets targets;
  std::uint64_t least = 0;
};
using ScanFaultName = NumberedFaultName<ScanFault>;
using UsbFaultName = NumberedFaultName<UsbFault>;

constexpr std::array kScanFaults = {
    ScanFaultName{"status-early", ScanFault::StatusEarly, "a number of bytes", kEsc},
    ScanFaultName{"status-late", ScanFault::StatusLate, "milliseconds", kEsc},
    ScanFaultName{"status-twice", ScanFault::StatusTwice, nullptr, kEsc},
    ScanFaultName{"status-never", ScanFault::StatusNever, nullptr, kEsc},
    ScanFaultName{"wrong-length", ScanFault::WrongLength, "the number of a block", kScanner},
    ScanFaultName{"stop-page", ScanFault::StopPage, "a number of bytes", kScanner},
    ScanFaultName{"close-mid-page", ScanFault::CloseMidPage, "a number of bytes", kScanner},
    ScanFaultName{"read-error", ScanFault::ReadError, "the number of blocks before it", kMethod},
    ScanFaultName{"no-data", ScanFault::NoData, nullptr, kScanner},
    ScanFaultName{"ignore-abort", ScanFault::IgnoreAbort, nullptr, kScanner},
    ScanFaultName{"host-mode-fail", ScanFault::HostModeFail, nullptr, kMethod},
    ScanFaultName{"host-mode-stay", ScanFault::HostModeStay, nullptr, kMethod},
};

constexpr std::array kUsbFaults = {
    UsbFaultName{"usb-stall", UsbFault::Stall, "a number of bytes", FaultTarget::Usb},
    UsbFaultName{"usb-unplug", UsbFault::Unplug, "a number of bytes", FaultTarget::Usb},
    UsbFaultName{"usb-short", UsbFault::Short, "a number of bytes, 1 or more", FaultTarget::UsbIn, 1},
    UsbFaultName{"usb-zero", UsbFault::Zero, nullptr, FaultTarget::UsbIn},
    UsbFaultName{"usb-babble", UsbFault::Babble, nullptr, FaultTarget::UsbIn},
    UsbFaultName{"usb-no-id", UsbFault::NoId, nullptr, FaultTarget::Usb},
    UsbFaultName{"usb-little-id", UsbFault::LittleId, nullptr, FaultTarget::Usb},
    UsbFaultName{"usb-empty-id", UsbFault::EmptyId, nullptr, FaultTarget::Usb},
};

// By the order of FaultTarget.
constexpr std::array kTargetTexts = {"replies to NPA commands",
                                     "packets without a reply",
                                     "replies to ESC commands",
                                     "replies to methods",
                                     "notifications",
                                     "frames",
                                     "USB",
                                     "what comes from the device on USB"};

// What a device lacks that has none of these targets.
const char* describe(FaultTargets targets) {
  if (targets.meet(kNpa)) return targets.meet(kScanner) ? "neither bidi port nor scanner" : "no bidi port";
  if (targets.meet(FaultTarget::Usb)) return "no USB side";
  if (targets.meet(FaultTarget::UsbIn)) return "no USB side that sends";
  if (targets.meet(kEsc)) return targets.meet(kMethod) ? "no scanner" : "no scanner that takes ESC commands";
  return targets.meet(FaultTarget::Frame) ? "no frame around its replies" : "no scanner that takes documents";
}

// Of bytes, milliseconds or blocks: no page has more, and sums with it do not overflow.
constexpr std::uint64_t kLargestValue = std::uint64_t{1} << 40;

template <typename Table>
const typename Table::value_type* findNamed(const Table& table, std::string_view name) {
  const auto found =
      std::find_if(table.begin(), table.end(), [name](const auto& known) { return known.name == name; });
  return found == table.end() ? nullptr : &*found;
}

}  // namespace

// "NAME[=VALUE][:VALUE]...", taken apart from left to right; complains about what is not as expected.
class FaultSwitches::Text {
 public:
  explicit Text(std::string_view text) : whole_(text) {
    const std::size_t nameEnd = std::min(text.find_first_of("=:"), text.size());
    name_ = text.substr(0, nameEnd);
    hasEquals_ = text.substr(nameEnd, 1) == "=";
    rest_ = text.substr(std::min(nameEnd + 1, text.size()));
  }

  std::string_view name() const { return name_; }
  bool isAtEnd() const { return rest_.empty(); }

  template <typename Number>
  Number takeNumber(const char* what, Number largest = std::numeric_limits<Number>::max()) {
    const auto number = hasEquals_ ? parse<Number>(takeWord()) : std::nullopt;
    if (!number || *number > largest) complain(std::string("expected ") + what);
    return *number;
  }

  std::string_view takeWord() {
    const std::size_t end = std::min(rest_.find(':'), rest_.size());
    const std::string_view word = rest_.substr(0, end);
    rest_ = rest_.substr(std::min(end + 1, rest_.size()));
    return word;
  }

  Times takeTimes() {
    if (isAtEnd()) return Times(std::nullopt);
    const auto times = parse<std::uint32_t>(takeWord());
    if (!times || *times == 0 || !isAtEnd()) complain("expected a number of times at the end");
    return Times(times);
  }

  void expectEnd() const {
    if (!isAtEnd()) complain("has a value too much");
  }
  void expectEquals() const {
    if (!isAtEnd() && !hasEquals_) complain("expected a value after =");
  }
  void expectNoEquals() const {
    if (hasEquals_) complain("takes no value");
  }

  [[noreturn]] void complain(std::string_view why) const {
    throw std::invalid_argument("fault \"" + std::string(whole_) + "\": " + std::string(why));
  }

 private:
  template <typename Number>
  static std::optional<Number> parse(std::string_view text) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
  }

  std::string_view whole_;
  std::string_view name_;
  std::string_view rest_;
  bool hasEquals_ = false;
};

void FaultSwitches::add(std::string_view text) {
  Text fault(text);
  const std::string_view name = fault.name();
  if (const ReplyFaultName* reply = findNamed(kReplyFaults, name)) {
    entries_.push_back(takeEntry(fault, *reply));
  } else if (const ScanFaultName* page = findNamed(kScanFaults, name)) {
    addTo(scanFaults_, fault, *page);
  } else if (const UsbFaultName* bus = findNamed(kUsbFaults, name)) {
    addTo(usbFaults_, fault, *bus);
  } else if (name == "busy" || name == "never-finish") {
    expectOneOf(fault, name == "busy" ? kNpa | kScanner : kNpa);
    fault.expectNoEquals();
    fault.expectEnd();
    (name == "busy" ? busy_ : neverFinish_) = true;
  } else if (name == "slow-print" || name == "slow-scan") {
    if (name == "slow-scan") expectOneOf(fault, kScanner);
    const auto rate = fault.takeNumber<std::uint64_t>("a number of bytes");
    fault.expectEnd();
    (name == "slow-print" ? printBytesPerSecond_ : scanBytesPerSecond_) = rate;
  } else if (name == "close-mid-job") {
    const auto bytes = fault.takeNumber<std::uint64_t>("a number of bytes");
    closeMidJob_ = Limited{bytes, fault.takeTimes()};
  } else if (name == "slow-discovery") {
    const std::chrono::milliseconds delay(fault.takeNumber<std::uint32_t>("milliseconds"));
    fault.expectEnd();
    discoveryDelay_ = delay;
  } else {
    fault.complain("unknown");
  }
}

template <typename Name, typename Fault>
void FaultSwitches::addTo(Numbered<Fault>& faults, Text& fault, const Name& known) const {
  expectOneOf(fault, known.targets);
  std::uint64_t value = 0;
  if (known.value == nullptr) {
    fault.expectNoEquals();
  } else {
    value = fault.takeNumber<std::uint64_t>(known.value, kLargestValue);
    if (value < known.least) fault.complain(std::string("expected ") + known.value);
  }
  faults.insert_or_assign(known.fault, Limited{value, fault.takeTimes()});
}

FaultSwitches::Entry FaultSwitches::takeEntry(Text& fault, const ReplyFaultName& known) const {
  fault.expectEquals();
  Entry entry{known.fault, std::nullopt, Times(std::nullopt)};
  if (known.takesDelay) {
    entry.delay = std::chrono::milliseconds(fault.takeNumber<std::uint32_t>("milliseconds"));
  }
  if (!fault.isAtEnd()) {
    const std::string_view command = fault.takeWord();
    if (const auto target = targetNamed_(command)) {
      // What misframes a method's reply strikes its frame.
      const bool isFrame = target == FaultTarget::MethodReply && !known.targets.meet(kMethod);
      const FaultTarget struck = isFrame ? FaultTarget::Frame : *target;
      if (!known.targets.meet(struck)) {
        fault.complain(std::string("is no fault of ") + kTargetTexts.at(static_cast<std::size_t>(*target)));
      }
      expectOneOf(fault, *target);
      expectOneOf(fault, struck);
      entry.command = command;
    } else if (command != "any") {
      fault.complain("unknown command name");
    }
  }
  expectOneOf(fault, known.targets);
  entry.times = fault.takeTimes();
  return entry;
}

void FaultSwitches::expectOneOf(const Text& fault, FaultTargets targets) const {
  if (!device_.meet(targets)) fault.complain(std::string("this device has ") + describe(targets));
}

std::optional<std::chrono::milliseconds> FaultSwitches::strike(ReplyFault fault, std::string_view command) {
  for (Entry& entry : entries_) {
    if (entry.fault != fault || (entry.command && entry.command != command) || !entry.times.areLeft())
      continue;
    entry.times.countDown();
    return entry.delay;
  }
  return std::nullopt;
}

template <typename Fault>
std::optional<std::uint64_t> FaultSwitches::valueIn(const Numbered<Fault>& faults, Fault fault) {
  const auto found = faults.find(fault);
  if (found == faults.end() || !found->second.times.areLeft()) return std::nullopt;
  return found->second.value;
}

template <typename Fault>
std::optional<std::uint64_t> FaultSwitches::strikeIn(Numbered<Fault>& faults, Fault fault) {
  const auto value = valueIn(faults, fault);
  if (value) faults.at(fault).times.countDown();
  return value;
}

std::optional<std::uint64_t> FaultSwitches::valueOf(ScanFault fault) const {
  return valueIn(scanFaults_, fault);
}

std::optional<std::uint64_t> FaultSwitches::strike(ScanFault fault) { return strikeIn(scanFaults_, fault); }

std::optional<std::uint64_t> FaultSwitches::valueOf(UsbFault fault) const {
  return valueIn(usbFaults_, fault);
}

std::optional<std::uint64_t> FaultSwitches::strike(UsbFault fault) { return strikeIn(usbFaults_, fault); }

bool FaultSwitches::closesJobAt(std::uint64_t received) {
  if (!closeMidJob_ || received < closeMidJob_->value || !closeMidJob_->times.areLeft()) return false;
  closeMidJob_->times.countDown();
  return true;
}

}  // namespace sim
