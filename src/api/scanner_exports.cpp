// The exported functions of scanners.
#include "api/device_exports.h"
#include "api/system.h"
#include "qvn/qvn.h"
#include "qvn/transport/data.h"

using namespace qvn;

uint32_t QvnOpenScanner(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnOpenScanner", clientId, handle,
                    [&](ExitDetail&) { return System::qvnOpenScanner(clientId, handle); });
}

uint32_t QvnCloseScanner(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnCloseScanner", clientId, handle,
                    [&](ExitDetail&) { return System::qvnCloseScanner(clientId, handle); });
}

uint32_t QvnDeleteScanner(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnDeleteScanner", clientId, handle,
                    [&](ExitDetail&) { return System::qvnDeleteScanner(handle); });
}

uint32_t QvnStartJobScanner(uint32_t clientId, uint32_t handle, void* job) {
  return deviceCall("QvnStartJobScanner", clientId, handle,
                    [&](ExitDetail&) { return System::qvnStartJobScanner(clientId, handle, job); });
}

uint32_t QvnEndJobScanner(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnEndJobScanner", clientId, handle,
                    [&](ExitDetail&) { return System::qvnEndJobScanner(clientId, handle); });
}

uint32_t QvnCancelJobScanner(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnCancelJobScanner", clientId, handle,
                    [&](ExitDetail&) { return System::qvnCancelJobScanner(clientId, handle); });
}

uint32_t QvnExchangeDataScanner(uint32_t clientId, uint32_t handle, const uint8_t* request,
                                uint32_t requestLength, uint8_t* reply, uint32_t replySize,
                                uint32_t* replyLength) {
  return deviceCall("QvnExchangeDataScanner", clientId, handle, [&](ExitDetail&) -> std::uint32_t {
    if (request == nullptr || reply == nullptr || replyLength == nullptr || replySize == 0 ||
        requestLength == 0) {
      return QRN_ERROR_INVALID_PARAMETER;
    }
    return exchange(request, requestLength, reply, replySize, *replyLength, [&](Data& sent, Data& received) {
      return System::qvnExchangeDataScanner(clientId, handle, sent, received);
    });
  });
}

uint32_t QvnGetStringScanner(uint32_t clientId, uint32_t handle, const char* key, char* buffer,
                             uint32_t bufferSize, uint32_t* required) {
  return getStringCall("QvnGetStringScanner", clientId, handle, key, buffer, bufferSize, required,
                       System::qvnGetStringScanner);
}

uint32_t QvnGetLongScanner(uint32_t clientId, uint32_t handle, const char* key, uint32_t* value) {
  return deviceCall("QvnGetLongScanner", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (key == nullptr || value == nullptr) return QRN_ERROR_INVALID_PARAMETER;
    const std::uint32_t rc = System::qvnGetLongScanner(handle, key, *value);
    exit.set([&] { return LogText() << " key=" << key << " value=" << *value; });
    return rc;
  });
}

uint32_t QvnGetCurrentStateScanner(uint32_t clientId, uint32_t handle, uint32_t* state) {
  return currentStateCall(
      "QvnGetCurrentStateScanner", clientId, handle, state,
      " state=", [&](std::uint32_t& value) { return System::qvnGetCurrentStateScanner(handle, value); });
}

uint32_t QvnSetJobStringScanner(uint32_t clientId, uint32_t handle, const char* key, const char* value) {
  return deviceCall("QvnSetJobStringScanner", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (key == nullptr || value == nullptr) return QRN_ERROR_INVALID_PARAMETER;
    exit.set([&] { return LogText() << " key=" << key << " value=" << value; });
    return System::qvnSetJobStringScanner(clientId, handle, key, value);
  });
}

uint32_t QvnSetJobLongScanner(uint32_t clientId, uint32_t handle, const char* key, uint32_t value) {
  return deviceCall("QvnSetJobLongScanner", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (key == nullptr || value == 0) return QRN_ERROR_INVALID_PARAMETER;
    exit.set([&] { return LogText() << " key=" << key << " value=" << value; });
    return System::qvnSetJobLongScanner(clientId, handle, key, value);
  });
}

// The scanner's answer to the next two does not reach the client.
uint32_t QvnRegisterForAsyncDataScanner(uint32_t clientId, uint32_t handle, uint32_t mask,
                                        QvnScanDataCallback callback) {
  return deviceCall("QvnRegisterForAsyncDataScanner", clientId, handle, [&](ExitDetail& exit) {
    System::qvnRegisterForAsyncDataScanner(handle, {mask, clientId, callback});
    exit.set([&] { return (LogText() << " mask=").maskBytes(mask); });
    return QRN_ERROR_SUCCESS;
  });
}

uint32_t QvnUnregisterForAsyncDataScanner(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnUnregisterForAsyncDataScanner", clientId, handle, [&](ExitDetail&) {
    System::qvnUnregisterForAsyncDataScanner(clientId, handle);
    return QRN_ERROR_SUCCESS;
  });
}
