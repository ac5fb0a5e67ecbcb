#include "connections/store_connection.h"

#include <memory>
#include <span>
#include <string_view>

#include "qvn/result_codes.h"
#include "streams/block_stream.h"
#include "streams/store_document.h"

namespace qvn::ipv4 {

std::uint32_t StoreConnection::exchange(Data& document, Device& device, PendingReply& reply) {
  setDevice(DeviceReference(device));
  std::uint32_t replyCode = QRN_ERROR_SUCCESS;
  const std::uint32_t result = exchange(bytesOf(document), reply, replyCode);
  document.setCount(result == QRN_ERROR_SUCCESS ? document.getLength() : 0);
  document.setRc(replyCode);
  return result;
}

std::uint32_t StoreConnection::exchange(std::span<const std::uint8_t> document, PendingReply& reply,
                                        std::uint32_t& replyCode) {
  const std::string_view id = requestIdOf({reinterpret_cast<const char*>(document.data()), document.size()});
  if (id.empty() || document.size() > kMaxBlockPayload) return replyCode = QRN_ERROR_INVALID_PARAMETER;
  std::shared_ptr<StoreSession> session;
  {
    const std::lock_guard<std::mutex> turn(turn_);
    const std::uint32_t rc =
        readySession([](const StoreSession&) { return true; }, [](StoreSession&) {}, session);
    if (rc != QRN_ERROR_SUCCESS) return replyCode = rc;
    // Whatever it waited for until here, what is cancelled is not sent any more.
    if (const auto code = reply.code()) return replyCode = *code;
    session->send(document, id, reply);
  }
  return session->await(reply, replyCode);
}

}  // namespace qvn::ipv4
