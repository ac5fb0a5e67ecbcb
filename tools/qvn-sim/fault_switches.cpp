#include "fault_switches.h"

#include <array>
#include <charconv>
#include <stdexcept>

namespace sim {
namespace {

struct ReplyFaultName {
  std::string_view name;
  ReplyFault fault;
  bool takesDelay;
};

constexpr std::array kReplyFaults = {
    ReplyFaultName{"delay-reply", ReplyFault::Delay, true},
    ReplyFaultName{"late-reply", ReplyFault::Late, true},
    ReplyFaultName{"drop-reply", ReplyFault::Drop, false},
    ReplyFaultName{"corrupt-reply", ReplyFault::Corrupt, false},
    ReplyFaultName{"misframe-reply", ReplyFault::Misframe, false},
    ReplyFaultName{"double-reply", ReplyFault::Double, false},
    ReplyFaultName{"reject", ReplyFault::Reject, false},
    ReplyFaultName{"close-bidi", ReplyFault::Close, false},
};

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
  const std::size_t equals = text.find('=');
  const std::string_view name = text.substr(0, equals);
  std::vector<std::string_view> values =
      equals == std::string_view::npos ? std::vector<std::string_view>() : split(text.substr(equals + 1));
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

  if (name == "busy" || name == "never-finish") {
    if (!values.empty()) complain(text, "takes no value");
    (name == "busy" ? busy_ : neverFinish_) = true;
    return;
  }
  if (name == "slow-print" || name == "close-mid-job") {
    const auto bytes = values.empty() ? std::nullopt : number<std::uint64_t>(takeFirst());
    if (!bytes) complain(text, "expected a number of bytes");
    const auto times = takeTimes();
    if (name == "slow-print") {
      if (times) complain(text, "takes one value");
      printBytesPerSecond_ = bytes;
    } else {
      closeMidJob_ = CloseMidJob{*bytes, times};
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
    Entry entry{known.fault, std::nullopt, std::nullopt};
    if (known.takesDelay) {
      const auto delay = values.empty() ? std::nullopt : number<std::uint32_t>(takeFirst());
      if (!delay) complain(text, "expected milliseconds");
      entry.delay = std::chrono::milliseconds(*delay);
    }
    if (!values.empty()) {
      const std::string_view command = takeFirst();
      if (command != "any") {
        entry.command = npa::commandNamed(command);
        if (!entry.command) complain(text, "unknown command name");
      }
    }
    entry.timesLeft = takeTimes();
    entries_.push_back(entry);
    return;
  }
  complain(text, "unknown");
}

std::optional<std::chrono::milliseconds> FaultSwitches::strike(ReplyFault fault,
                                                               std::optional<npa::Command> command) {
  for (Entry& entry : entries_) {
    if (entry.fault != fault || (entry.command && entry.command != command)) continue;
    if (entry.timesLeft) {
      if (*entry.timesLeft == 0) continue;
      --*entry.timesLeft;
    }
    return entry.delay;
  }
  return std::nullopt;
}

bool FaultSwitches::closesJobAt(std::uint64_t received) {
  if (!closeMidJob_ || received < closeMidJob_->bytes) return false;
  if (closeMidJob_->timesLeft) {
    if (*closeMidJob_->timesLeft == 0) return false;
    --*closeMidJob_->timesLeft;
  }
  return true;
}

}  // namespace sim
