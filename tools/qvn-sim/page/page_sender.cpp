#include "page/page_sender.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace sim {
namespace {

constexpr std::size_t kPromisedTooMuch = 256;

// A slow device that has sent nothing for longer may send at once what it could have in this time.
constexpr std::chrono::milliseconds kLongestCredit{20};

EventLoop::Clock::duration timeFor(std::uint64_t bytes, std::uint64_t rate) {
  return std::chrono::duration_cast<EventLoop::Clock::duration>(
      std::chrono::duration<double>(static_cast<double>(bytes) / static_cast<double>(rate)));
}

}  // namespace

PageSender::PageSender(PageStream stream, FaultSwitches& faults)
    : stream_(std::move(stream)), faults_(faults) {
  if (const auto block = faults_.strike(ScanFault::WrongLength)) {
    stream_.promiseTooMuch(*block, kPromisedTooMuch);
  }
}

PageSender::Next PageSender::next() {
  bytes_ = stream_.pending();
  if (aborted_) return bytes_.empty() ? Next::Done : Next::Send;
  if (silent_) return Next::Silence;
  if (stream_.sentBytes() == 0 && !hasNoData_ && faults_.strike(ScanFault::NoData)) {
    hasNoData_ = true;
    stream_.endAfterBlock();
    return Next::ReadError;
  }

  // How far it is to the place where a fault strikes; at the place it does.
  std::uint64_t limit = bytes_.size();
  const auto strikesAt = [&](ScanFault fault, std::uint64_t place) {
    limit = std::min(limit, place - std::min(place, stream_.sentBytes()));
    return stream_.sentBytes() >= place && faults_.strike(fault).has_value();
  };
  if (const auto payload = faults_.valueOf(ScanFault::CloseMidPage)) {
    if (strikesAt(ScanFault::CloseMidPage, stream_.bytesFor(*payload))) return Next::Close;
  }
  if (const auto payload = faults_.valueOf(ScanFault::StopPage)) {
    if (strikesAt(ScanFault::StopPage, stream_.bytesFor(*payload))) {
      silent_ = true;
      return Next::Silence;
    }
  }
  if (const auto payload = faults_.valueOf(ScanFault::StatusEarly); payload && !hasToldStatus_) {
    if (strikesAt(ScanFault::StatusEarly, stream_.wholeBlocksFor(*payload))) {
      hasToldStatus_ = true;
      return Next::Status;
    }
  }
  if (const auto blocks = faults_.valueOf(ScanFault::ReadError); blocks && !hasToldReadError_) {
    if (strikesAt(ScanFault::ReadError, stream_.bytesForBlocks(*blocks))) {
      hasToldReadError_ = true;
      return Next::ReadError;
    }
  }
  if (bytes_.empty()) return Next::Done;
  limit = std::min<std::uint64_t>(limit, allowance());
  bytes_ = bytes_.first(static_cast<std::size_t>(limit));
  return bytes_.empty() ? Next::Wait : Next::Send;
}

void PageSender::sent(std::size_t count) {
  stream_.sent(count);
  const auto rate = faults_.scanBytesPerSecond();
  if (rate && *rate > 0) paidUntil_ += timeFor(count, *rate);
}

void PageSender::abort() {
  aborted_ = true;
  stream_.endAfterBlock();
}

std::size_t PageSender::allowance() {
  const auto rate = faults_.scanBytesPerSecond();
  if (!rate) return std::numeric_limits<std::size_t>::max();
  if (*rate == 0) return 0;
  const auto now = EventLoop::Clock::now();
  paidUntil_ =
      std::max(paidUntil_, now - std::max<EventLoop::Clock::duration>(kLongestCredit, timeFor(1, *rate)));
  const double seconds = std::chrono::duration<double>(now - paidUntil_).count();
  return static_cast<std::size_t>(std::max(0.0, seconds * static_cast<double>(*rate)));
}

}  // namespace sim
