#include "shared/sessions/store_session.h"

#include <mutex>
#include <string_view>

#include "qvn/result_codes.h"
#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "shared/streams/store_document.h"

namespace qvn::shared {

bool StoreSession::isReply(const Block& block, Bytes id) const {
  return answeredIdOf(block.bytes) == std::string_view(reinterpret_cast<const char*>(id.data()), id.size());
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

std::uint32_t StoreSession::streamError() const {
  return stream_.isBroken() ? QRN_ERROR_INVALID_DATA : QRN_ERROR_SUCCESS;
}

}  // namespace qvn::shared
