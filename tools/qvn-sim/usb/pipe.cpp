#include "usb/pipe.h"

#include <algorithm>
#include <utility>

namespace sim::usb {

void Pipe::submit(Transfer transfer) {
  waiting_.push_back(std::move(transfer));
  if (isHalted_) {
    endAll(Status::Stall);
  } else {
    serve();
  }
}

std::optional<Transfer> Pipe::cancel(ConnectionId host, std::uint32_t sequence) {
  const auto found = std::find_if(waiting_.begin(), waiting_.end(), [&](const Transfer& transfer) {
    return transfer.host == host && transfer.sequence == sequence;
  });
  if (found == waiting_.end()) return std::nullopt;
  Transfer transfer = std::move(*found);
  waiting_.erase(found);
  transfer.status = Status::Cancelled;
  return transfer;
}

void Pipe::forget(ConnectionId host) {
  std::erase_if(waiting_, [host](const Transfer& transfer) { return transfer.host == host; });
}

void Pipe::halt() {
  isHalted_ = true;
  endAll(Status::Stall);
}

void Pipe::clearHalt() { isHalted_ = false; }

void Pipe::reset() {
  isHalted_ = false;
  discard();
  endAll(Status::Shutdown);
}

void Pipe::finishCurrent(Status status) {
  Transfer transfer = std::move(waiting_.front());
  waiting_.pop_front();
  const bool isTooShort = transfer.isIn() && transfer.mustBeFull && transfer.data.size() < transfer.length;
  transfer.status = status == Status::Done && isTooShort ? Status::Short : status;
  onDone_(std::move(transfer));
}

void Pipe::endAll(Status status) {
  while (!waiting_.empty()) finishCurrent(status);
}

}  // namespace sim::usb
