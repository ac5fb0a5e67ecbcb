#include "usb/print_pipe.h"

#include <algorithm>
#include <utility>

#include "base/big_endian.h"

namespace sim::usb {
namespace {

constexpr std::uint8_t kStartOfPacket = 0xA5;

// The length of the packet that begins the unit, as far as that is known.
std::optional<std::size_t> packetLength(ByteView unit) {
  BigEndianReader reader(unit);
  const std::size_t uncounted = reader.bytes(1).size() + sizeof(std::uint16_t);
  const std::size_t counted = reader.u16();
  return reader.isGood() ? std::optional(uncounted + counted) : std::nullopt;
}

bool endsInShortPacket(const Transfer& transfer) {
  return transfer.length == 0 || transfer.length % kBulkPacket != 0 || transfer.endsWithZeroPacket;
}

}  // namespace

PrintPipe::PrintPipe(EventLoop& loop, FaultSwitches& faults, PortLink& print, PortLink& bidi,
                     bool endsInSilence, Events events, const OnDone& onDone)
    : Pipe(onDone),
      faults_(faults),
      print_(print),
      bidi_(bidi),
      endsInSilence_(endsInSilence),
      events_(std::move(events)),
      silence_(
          loop, [this] { return hasWaiting() || !print_.isEmpty(); }, [this] { print_.finish(); }) {}

void PrintPipe::serve() {
  while (flush() && hasWaiting()) {
    Transfer& transfer = current();
    const ByteView rest = ByteView(transfer.data).subspan(transfer.taken);
    if (!rest.empty()) {
      if (unit_ == Unit::Begins) {
        unit_ = tellsPackets_ && rest.front() == kStartOfPacket ? Unit::Undecided : Unit::PrintData;
      }
      const auto taken = unit_ == Unit::Undecided ? hold(rest) : takePrintData(rest);
      if (!taken) return;
      transfer.taken += *taken;
      if (*taken == 0) return;
      if (transfer.taken < transfer.length) continue;
    }
    if (endsInShortPacket(transfer)) endUnit();
    finishCurrent(Status::Done);
  }
}

void PrintPipe::endPrintData(bool forgetsUnit) {
  if (!forgetsUnit && !held_.empty()) passHeldOn();
  print_.finish();
}

void PrintPipe::discard() {
  print_.discard();
  bidi_.discard();
  held_.clear();
  unit_ = Unit::Begins;
}

bool PrintPipe::flush() {
  const auto isPrintFlushed = print_.flush();
  if (!isPrintFlushed) {
    print_.discard();
    halt();
    return false;
  }
  auto isBidiFlushed = bidi_.flush();
  if (!isBidiFlushed) {
    events_.onBidiEnded();
    isBidiFlushed = bidi_.flush();  // over a new connection
  }
  if (!isBidiFlushed) bidi_.discard();
  return *isPrintFlushed && isBidiFlushed.value_or(true);
}

std::size_t PrintPipe::hold(ByteView packets) {
  const ByteView packet = packets.first(std::min(kBulkPacket, packets.size()));
  held_.insert(held_.end(), packet.begin(), packet.end());
  const auto length = packetLength(held_);
  if (length && held_.size() > *length) passHeldOn();
  return packet.size();
}

std::optional<std::size_t> PrintPipe::takePrintData(ByteView packets) {
  // Where a fault strikes, and whether it is there.
  const auto strikesAt = [&](UsbFault fault, std::uint64_t& since) {
    const auto place = faults_.valueOf(fault);
    if (!place) return false;
    if (since >= *place) {
      faults_.strike(fault);
      since = 0;
      return true;
    }
    packets =
        packets.first(wholePackets(std::min<std::uint64_t>(*place - since, packets.size()), packets.size()));
    return false;
  };
  if (strikesAt(UsbFault::Unplug, sincePlugged_)) {
    events_.onUnplug();
    return std::nullopt;
  }
  if (strikesAt(UsbFault::Stall, sinceStall_)) {
    halt();
    return std::nullopt;
  }
  const auto taken = print_.take(packets);
  if (!taken) {
    halt();
    return std::nullopt;
  }
  count(*taken);
  return taken;
}

void PrintPipe::endUnit() {
  if (unit_ == Unit::Undecided) {
    if (packetLength(held_) == held_.size()) {
      bidi_.add(std::exchange(held_, {}));
    } else {
      passHeldOn();
    }
  }
  unit_ = Unit::Begins;
}

void PrintPipe::passHeldOn() {
  count(held_.size());
  print_.add(std::exchange(held_, {}));
  unit_ = Unit::PrintData;
}

void PrintPipe::count(std::size_t printData) {
  // A fault counts from the time that the device has it.
  sinceStall_ = faults_.valueOf(UsbFault::Stall) ? sinceStall_ + printData : 0;
  sincePlugged_ = faults_.valueOf(UsbFault::Unplug) ? sincePlugged_ + printData : 0;
  if (endsInSilence_) silence_.used();
}

}  // namespace sim::usb
