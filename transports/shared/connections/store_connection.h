// The "bidi" connection of a Bpd scanner: exchanges XML documents with the device's object store, and brings
// what the scanner sends.
#pragma once

#include <cstdint>
#include <stop_token>

#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "shared/connections/session_connection.h"
#include "shared/sessions/store_session.h"

namespace qvn::shared {

// Connected anew, the device has forgotten who observes it and who has its host mode.
class StoreConnection : public SessionConnection<StoreSession> {
 public:
  using SessionConnection::SessionConnection;

  // Sends a method document and returns when the reply with its id has been delivered. Returns 0 when the
  // exchange was carried out, with the document's code 0 for a reply and 1460 for none; else the code of
  // both: 87, with nothing sent, for a document without id or longer than a block, 1236 when it was
  // cancelled. The document's count is the number of bytes sent: all or, on failure, 0. Any thread but the
  // session's own; threads take turns in sending only.
  std::uint32_t exchange(Data& document, Device& device, const std::stop_token& cancelled);
};

}  // namespace qvn::shared
