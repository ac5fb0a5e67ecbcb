// What exported functions of several kinds of devices do alike.
#pragma once

#include <cstdint>

#include "api/exported_call.h"
#include "api/output_buffer.h"
#include "qvn/transport/data.h"

namespace qvn {

// Exchanges the client's request: `forward` gets it and room for the reply, which goes to the client as the
// buffer rule says. `replyLength` stays 0 when it fails.
template <typename Forward>
std::uint32_t exchange(const std::uint8_t* request, std::uint32_t requestLength, std::uint8_t* reply,
                       std::uint32_t replySize, std::uint32_t& replyLength, Forward&& forward) {
  constexpr std::uint8_t kReplyFill = 0xFF;
  replyLength = 0;
  Data requestData(request, requestLength);
  Data replyData(replySize, kReplyFill);
  const std::uint32_t rc = forward(requestData, replyData);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  return copyOut(replyData.getBuffer(), replyData.getLength(), reply, replySize, replyLength);
}

// Asks for a device's current state. A zero handle is refused by the handle's table, not here; `label` comes
// before the state in the exit line.
template <typename Forward>
std::uint32_t currentStateCall(const char* function, std::uint32_t clientId, std::uint32_t handle,
                               std::uint32_t* state, const char* label, Forward&& forward) {
  return tracedCall([=] { return entryText(function, handle, clientId); },
                    [&](ExitDetail& exit) -> std::uint32_t {
                      if (state == nullptr) return QRN_ERROR_INVALID_PARAMETER;
                      *state = 0;
                      const std::uint32_t rc = forward(*state);
                      exit.set([&] { return LogText() << label << *state; });
                      return rc;
                    });
}

// Whether a string can be asked for and given to the client.
inline bool canGetString(const char* key, const char* buffer, std::uint32_t bufferSize,
                         const std::uint32_t* required) {
  return key != nullptr && buffer != nullptr && bufferSize != 0 && required != nullptr;
}

// Reads a stored string, and shows it in the exit line.
template <typename Forward>
std::uint32_t getStringCall(const char* function, std::uint32_t clientId, std::uint32_t handle,
                            const char* key, char* buffer, std::uint32_t bufferSize, std::uint32_t* required,
                            Forward&& forward) {
  return deviceCall(function, clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (!canGetString(key, buffer, bufferSize, required)) return QRN_ERROR_INVALID_PARAMETER;
    const std::uint32_t rc = forward(handle, key, buffer, bufferSize, *required);
    exit.set([&] { return LogText() << " key=" << key << " value=" << buffer; });
    return rc;
  });
}

}  // namespace qvn
