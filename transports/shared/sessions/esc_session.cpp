#include "shared/sessions/esc_session.h"

#include <algorithm>
#include <mutex>

#include "qvn/result_codes.h"
#include "qvn/transport/device.h"

namespace qvn::shared {
namespace {

// A page comes for it, and then a status.
bool beginsPage(esc::Bytes bytes) { return esc::beginsWith(bytes, {{esc::kEscape, 'S', 'G'}, 3}); }

// How a reply begins to a request that expects one.
esc::Bytes replyPrefix(esc::Bytes request) {
  const esc::Command* const command = esc::find(request);
  return command != nullptr ? command->reply.view() : request.first(esc::kOtherCodeLength);
}

// Whether one thing could begin with both.
bool agree(esc::Bytes left, esc::Bytes right) {
  const std::size_t length = std::min(left.size(), right.size());
  return std::equal(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(length), right.begin());
}

}  // namespace

std::uint32_t EscSession::send(esc::Bytes bytes, std::size_t& sent) {
  sent = 0;
  {
    std::unique_lock<std::mutex> lock(mutex_);
    // The second copy of a status must not end the scan that this begins.
    if (!answered_.empty()) takeInLocked(lock);
    answered_.clear();
    if (endedBy_ != 0) return endedBy_;
    if (beginsPage(bytes)) pageUnderWay_ = true;
  }
  const std::uint32_t rc = channel_->send(bytes, timeouts_.npaWrite, sent);
  const std::lock_guard<std::mutex> lock(mutex_);
  if (rc != QRN_ERROR_SUCCESS) endLocked(rc);
  return rc;
}

bool EscSession::isAmbiguous(esc::Bytes bytes) const {
  // Nothing is expected of an abort, which must reach the page that comes.
  if (!esc::expectsReply(bytes) && !beginsPage(bytes)) return false;
  const esc::Bytes expected = beginsPage(bytes) ? esc::kStatus.view() : replyPrefix(bytes);
  const auto mayMeet = [&](esc::Bytes still) { return agree(still, expected); };
  const std::lock_guard<std::mutex> lock(mutex_);
  return (pageUnderWay_ && mayMeet(esc::kStatus.view())) ||
         unanswered_.mayBring([&](esc::Bytes earlier) { return mayMeet(replyPrefix(earlier)); });
}

bool EscSession::isForDeviceLocked(const esc::Bytes& command, bool isAwaited) {
  if (isStaleLocked(command, isAwaited)) return false;
  if (esc::beginsWith(command, esc::kStatus)) pageUnderWay_ = false;
  return true;
}

bool EscSession::isStaleLocked(esc::Bytes command, bool isAwaited) {
  if (unanswered_.take([&](esc::Bytes earlier) { return esc::isReply(earlier, command); })) return true;
  if (isAwaited) return false;
  const bool comesAgain = esc::isReply(answered_, command);
  const bool comesTooEarly = esc::isReply(preparedLocked(), command);
  return comesAgain || comesTooEarly;
}

void EscSession::answeredLocked(Bytes request) { answered_.assign(request.begin(), request.end()); }

}  // namespace qvn::shared
