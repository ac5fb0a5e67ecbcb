#include "shared/connections/store_connection.h"

#include <mutex>
#include <string_view>
#include <vector>

#include "qvn/result_codes.h"
#include "shared/streams/block_stream.h"
#include "shared/streams/store_document.h"

namespace qvn::shared {
namespace {

std::vector<std::uint8_t> blockOf(Session::Bytes document) {
  const std::array header = blockHeader(document.size());
  std::vector<std::uint8_t> block;
  block.reserve(header.size() + document.size());
  block.insert(block.end(), header.begin(), header.end());
  block.insert(block.end(), document.begin(), document.end());
  return block;
}

}  // namespace

std::uint32_t StoreConnection::exchange(Data& document, Device& device, const std::stop_token& cancelled) {
  const Session::Bytes bytes = bytesOf(document);
  const std::string_view id = requestIdOf(bytesAsText(document));
  if (id.empty() || bytes.size() > kMaxBlockPayload) {
    return answer(document, QRN_ERROR_INVALID_PARAMETER, QRN_ERROR_INVALID_PARAMETER);
  }
  setDevice(DeviceReference(device));
  const std::vector<std::uint8_t> block = blockOf(bytes);
  std::unique_lock<std::mutex> turn(turn_);
  std::uint32_t replyCode = QRN_ERROR_SUCCESS;
  const std::uint32_t result =
      SessionConnection::exchange(turn, block, {reinterpret_cast<const std::uint8_t*>(id.data()), id.size()},
                                  Overlap::Yes, cancelled, replyCode);
  return answer(document, result, replyCode);
}

}  // namespace qvn::shared
