#include "sessions/store_session.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <utility>

#include "base/ip_settings.h"
#include "net/tcp_socket.h"
#include "qvn/result_codes.h"
#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "qvn/transport/lent_data.h"
#include "streams/store_document.h"

namespace qvn::ipv4 {

void StoreSession::send(std::span<const std::uint8_t> document, std::string_view id, PendingReply& reply) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (endedBy_ != 0) return reply.end(endedBy_);
    unanswered_.push_back({id, &reply});
  }
  const std::array header = blockHeader(document.size());
  std::vector<std::uint8_t> block(header.begin(), header.end());
  block.insert(block.end(), document.begin(), document.end());
  std::size_t sent = 0;
  const std::uint32_t rc = socket_.send(block.data(), block.size(), timeouts_.npaWrite, sent);
  if (rc == QRN_ERROR_SUCCESS) return;
  const std::lock_guard<std::mutex> lock(mutex_);
  endLocked(rc);  // a block sent in part leaves nothing to go on with
}

std::uint32_t StoreSession::await(PendingReply& reply, std::uint32_t& replyCode) {
  const std::optional<std::uint32_t> code = reply.await(std::chrono::milliseconds(timeouts_.reply));
  const std::lock_guard<std::mutex> lock(mutex_);
  std::erase_if(unanswered_, [&](const Request& request) { return request.reply == &reply; });
  if (arrived_ == &reply) arrived_ = nullptr;
  replyCode = code.value_or(QRN_ERROR_TIMEOUT);
  return code.value_or(QRN_ERROR_SUCCESS);
}

void StoreSession::deliver(const Block& block) {
  const std::string_view id = answeredIdOf(block.bytes);
  DeviceReference device;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    device = device_;
    const auto asked = std::find_if(unanswered_.begin(), unanswered_.end(),
                                    [id](const Request& request) { return request.id == id; });
    if (asked != unanswered_.end()) {
      arrived_ = asked->reply;
      arrived_->setArrived();
      unanswered_.erase(asked);
    }
  }
  LentData data(block.bytes.data(), static_cast<std::uint32_t>(block.bytes.size()));
  data.setRc(block.code);
  device.accept(data);
  const std::lock_guard<std::mutex> lock(mutex_);
  if (arrived_ != nullptr) std::exchange(arrived_, nullptr)->end(QRN_ERROR_SUCCESS);
}

void StoreSession::settleLocked() {
  if (stream_.isBroken()) endLocked(QRN_ERROR_INVALID_DATA);
}

void StoreSession::deliverEnd() {
  Data nothing;
  DeviceReference device;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    nothing.setRc(endedBy_);
    device = device_;
  }
  device.accept(nothing);
  StreamSession::deliverEnd();
}

void StoreSession::wakeLocked() {
  StreamSession::wakeLocked();
  for (const Request& request : unanswered_) request.reply->end(endedBy_);
  unanswered_.clear();
}

}  // namespace qvn::ipv4
