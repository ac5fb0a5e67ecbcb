#include "usb/in_pipe.h"

#include <algorithm>

#include "base/little_endian.h"

namespace sim::usb {
namespace {

// A type byte and the length of what follows.
constexpr std::size_t kReportHeader = 3;

}  // namespace

InPipe::InPipe(EventLoop& loop, FaultSwitches& faults, PortLink& link, Units units, std::size_t packetSize,
               const OnDone& onDone)
    : Pipe(onDone),
      faults_(faults),
      link_(link),
      units_(units),
      packetSize_(packetSize),
      idle_(
          loop, [this] { return hasWaiting(); },
          [this] {
            link_.close();
            discard();
          }) {}

void InPipe::serve() {
  if (units_ == Units::Reports) idle_.used();
  while (hasWaiting() && (fetch() > 0 || emptyPacketIsDue_)) transfer();
  if (hasWaiting() && portHasEnded_) portEnded();
}

void InPipe::discard() {
  buffer_.clear();
  sent_ = unit_ = 0;
  emptyPacketIsDue_ = gaveZero_ = portHasEnded_ = false;
}

void InPipe::portEnded() {
  discard();
  halt();
}

std::size_t InPipe::fetch() {
  if (unit_ > 0 && (units_ != Units::Stream || unit_ >= packetSize_)) return unit_;
  if (emptyPacketIsDue_) return 0;
  unit_ = wholeUnit();
  if (portHasEnded_ || (unit_ > 0 && units_ != Units::Stream)) return unit_;
  buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(sent_));
  sent_ = 0;
  portHasEnded_ = !link_.receive(buffer_);
  unit_ = wholeUnit();
  return unit_;
}

std::size_t InPipe::wholeUnit() const {
  const ByteView left = ByteView(buffer_).subspan(sent_);
  if (units_ != Units::Reports) return left.size();
  const std::size_t length = kReportHeader + readLittle16(left, 1);
  return left.size() >= length ? length : 0;
}

void InPipe::transfer() {
  if (!gaveZero_ && faults_.strike(UsbFault::Zero)) {
    gaveZero_ = true;
    finishCurrent(Status::Done);
    return;
  }
  gaveZero_ = false;
  if (faults_.strike(UsbFault::Babble)) {
    advance(std::min(fetch(), packetSize_));
    finishCurrent(Status::Overflow);
    return;
  }
  const std::size_t packetSize =
      std::min<std::uint64_t>(packetSize_, faults_.strike(UsbFault::Short).value_or(packetSize_));
  Transfer& to = current();
  for (bool isOver = false; !isOver;) {
    const std::size_t size = std::min(fetch(), packetSize);
    if (size > to.length - to.data.size()) {
      advance(size);
      finishCurrent(Status::Overflow);
      return;
    }
    const auto begin = buffer_.begin() + static_cast<std::ptrdiff_t>(sent_);
    to.data.insert(to.data.end(), begin, begin + static_cast<std::ptrdiff_t>(size));
    advance(size);
    isOver = size < packetSize_ || to.data.size() == to.length;
  }
  finishCurrent(Status::Done);
}

void InPipe::advance(std::size_t count) {
  if (count == 0) {
    emptyPacketIsDue_ = false;
    return;
  }
  sent_ += count;
  unit_ -= count;
  emptyPacketIsDue_ = unit_ == 0 && count == packetSize_ && units_ != Units::Stream;
}

}  // namespace sim::usb
