#include "fault_switches.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>

namespace sim {
namespace {

struct ReplyFaultName {
  std::string_view name;
  ReplyFault fault;
  bool takesDelay;
  bool strikesEsc;  // replies to ESC commands too
};

constexpr std::array kReplyFaults = {
    ReplyFaultName{"delay-reply", ReplyFault::Delay, true, true},
    ReplyFaultName{"late-reply", ReplyFault::Late, true, false},
    ReplyFaultName{"drop-reply", ReplyFault::Drop, false, true},
    ReplyFaultName{"corrupt-reply", ReplyFault::Corrupt, false, false},
    ReplyFaultName{"misframe-reply", ReplyFault::Misframe, false, false},
    ReplyFaultName{"double-reply", ReplyFault::Double, false, true},
    ReplyFaultName{"reject", ReplyFault::Reject, false, false},
    ReplyFaultName{"close-bidi", ReplyFault::Close, false, true},
};

struct PageFaultName {
  std::string_view name;
  PageFault fault;
  const char* value;  // what its number is; none when it has none
};

constexpr std::array kPageFaults = {
    PageFaultName{"status-early", PageFault::StatusEarly, "a number of bytes"},
    PageFaultName{"status-late", PageFault::StatusLate, "milliseconds"},
    PageFaultName{"status-twice", PageFault::StatusTwice, nullptr},
    PageFaultName{"status-never", PageFault::StatusNever, nullptr},
    PageFaultName{"wrong-length", PageFault::WrongLength, "the number of a block"},
    PageFaultName{"stop-page", PageFault::StopPage, "a number of bytes"},
    PageFaultName{"close-mid-page", PageFault::CloseMidPage, "a number of bytes"},
    PageFaultName{"ignore-abort", PageFault::IgnoreAbort, nullptr},
};

// Of bytes, milliseconds or blocks: no page has more, and sums with it do not overflow.
constexpr std::uint64_t kLargestValue = std::uint64_t{1} << 40;

[[noreturn]] void complain(std::string_view text, std::string_view why) {
  throw std::invalid_argument("fault \"" + std::string(text) + "\": " + std::string(why));
}

template <typename Number>
std::optional<Number> number(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::vector<std::string_view> split(std::string_view text) {
  std::vector<std::string_view> parts;
  while (!text.empty()) {
    const std::size_t colon = text.find(':');
    parts.push_back(text.substr(0, colon));
    text = colon == std::string_view::npos ? std::string_view() : text.substr(colon + 1);
  }
  return parts;
}

}  // namespace

void FaultSwitches::add(std::string_view text) {
  const std::size_t nameEnd = std::min(text.find_first_of("=:"), text.size());
  const std::string_view name = text.substr(0, nameEnd);
  const bool hasEquals = text.substr(nameEnd, 1) == "=";
  std::vector<std::string_view> values = split(text.substr(std::min(nameEnd + 1, text.size())));
  const auto takeFirst = [&values] {
    const std::string_view first = values.front();
    values.erase(values.begin());
    return first;
  };
  const auto takeTimes = [&]() -> std::optional<std::uint32_t> {
    if (values.empty()) return std::nullopt;
    const auto times = number<std::uint32_t>(takeFirst());
    if (!times || !values.empty()) complain(text, "expected a number of times at the end");
    return times;
  };

  for (const PageFaultName& known : kPageFaults) {
    if (known.name != name) continue;
    std::uint64_t value = 0;
    if (known.value != nullptr) {
      const auto given = values.empty() ? std::nullopt : number<std::uint64_t>(takeFirst());
      if (!given || !hasEquals || *given > kLargestValue)
        complain(text, std::string("expected ") + known.value);
      value = *given;
    } else if (hasEquals) {
      complain(text, "takes no value");
    }
    pageFaults_.insert_or_assign(known.fault, Limited{value, Times(takeTimes())});
    return;
  }
  if (!values.empty() && !hasEquals) complain(text, "expected a value after =");
  if (name == "busy" || name == "never-finish") {
    if (!values.empty()) complain(text, "takes no value");
    (name == "busy" ? busy_ : neverFinish_) = true;
    return;
  }
  if (name == "slow-print" || name == "slow-scan" || name == "close-mid-job") {
    const auto bytes = values.empty() ? std::nullopt : number<std::uint64_t>(takeFirst());
    if (!bytes) complain(text, "expected a number of bytes");
    const auto times = takeTimes();
    if (name == "close-mid-job") {
      closeMidJob_ = Limited{*bytes, Times(times)};
    } else {
      if (times) complain(text, "takes one value");
      (name == "slow-print" ? printBytesPerSecond_ : scanBytesPerSecond_) = bytes;
    }
    return;
  }
  if (name == "slow-discovery") {
    const auto delay = values.empty() ? std::nullopt : number<std::uint32_t>(takeFirst());
    if (!delay || !values.empty()) complain(text, "expected milliseconds");
    discoveryDelay_ = std::chrono::milliseconds(*delay);
    return;
  }
  for (const ReplyFaultName& known : kReplyFaults) {
    if (known.name != name) continue;
    Entry entry{known.fault, std::nullopt, Times(std::nullopt)};
    if (known.takesDelay) {
      const auto delay = values.empty() ? std::nullopt : number<std::uint32_t>(takeFirst());
      if (!delay) complain(text, "expected milliseconds");
      entry.delay = std::chrono::milliseconds(*delay);
    }
    if (!values.empty()) {
      const std::string_view command = takeFirst();
      if (const auto ofNpa = npa::commandNamed(command)) {
        entry.command = npa::nameOf(*ofNpa);
      } else if (const auto ofEsc = esc::commandNamed(command)) {
        if (!known.strikesEsc) complain(text, "is no fault of replies to ESC commands");
        entry.command = esc::nameOf(*ofEsc);
      } else if (command != "any") {
        complain(text, "unknown command name");
      }
    }
    entry.times = Times(takeTimes());
    entries_.push_back(entry);
    return;
  }
  complain(text, "unknown");
}

std::optional<std::chrono::milliseconds> FaultSwitches::strike(ReplyFault fault,
                                                               std::optional<npa::Command> command) {
  return strike(fault, command ? npa::nameOf(*command) : std::string_view());
}

std::optional<std::chrono::milliseconds> FaultSwitches::strike(ReplyFault fault, esc::Command command) {
  return strike(fault, esc::nameOf(command));
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

std::optional<std::uint64_t> FaultSwitches::valueOf(PageFault fault) const {
  const auto found = pageFaults_.find(fault);
  if (found == pageFaults_.end() || !found->second.times.areLeft()) return std::nullopt;
  return found->second.value;
}

std::optional<std::uint64_t> FaultSwitches::strike(PageFault fault) {
  const auto value = valueOf(fault);
  if (value) pageFaults_.at(fault).times.countDown();
  return value;
}

bool FaultSwitches::closesJobAt(std::uint64_t received) {
  if (!closeMidJob_ || received < closeMidJob_->value || !closeMidJob_->times.areLeft()) return false;
  closeMidJob_->times.countDown();
  return true;
}

}  // namespace sim
