// The exported functions of printers.
#include <cstring>

#include "api/device_exports.h"
#include "api/system.h"
#include "device/job_description.h"
#include "npa/npa_packet.h"
#include "qvn/qvn.h"
#include "qvn/transport/data.h"

using namespace qvn;

namespace {

constexpr std::uint32_t kCacheSize = 1024;
constexpr std::uint8_t kCacheFill = 0xFF;

}  // namespace

uint32_t QvnOpenPrinter(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnOpenPrinter", clientId, handle,
                    [&](ExitDetail&) { return System::qvnOpenPrinter(clientId, handle); });
}

uint32_t QvnClosePrinter(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnClosePrinter", clientId, handle,
                    [&](ExitDetail&) { return System::qvnClosePrinter(clientId, handle); });
}

uint32_t QvnDeletePrinter(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnDeletePrinter", clientId, handle,
                    [&](ExitDetail&) { return System::qvnDeletePrinter(handle); });
}

uint32_t QvnStartJobPrinter(uint32_t clientId, uint32_t handle, uint32_t spoolerJobId,
                            const char* printObject, const char* hostName, const char* jobName,
                            const char* userName) {
  return deviceCall("QvnStartJobPrinter", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (printObject == nullptr) return QRN_ERROR_INVALID_PARAMETER;
    const JobRequest job{spoolerJobId, printObject, orEmpty(hostName), orEmpty(jobName), orEmpty(userName)};
    const std::uint32_t rc = System::qvnStartJobPrinter(clientId, handle, job);
    exit.set([&] { return LogText() << " printObject=" << printObject << " spoolerJobId=" << spoolerJobId; });
    return rc;
  });
}

uint32_t QvnWritePrinter(uint32_t clientId, uint32_t handle, const uint8_t* buffer, uint32_t bufferSize,
                         uint32_t* bytesWritten) {
  return tracedCall(
      [=] { return entryText("QvnWritePrinter", handle, clientId) << " bufferSize=" << bufferSize; },
      [&](ExitDetail& exit) -> std::uint32_t {
        if (handle == 0) return QRN_ERROR_INVALID_HANDLE;
        if (buffer == nullptr || bufferSize == 0 || bytesWritten == nullptr)
          return QRN_ERROR_INVALID_PARAMETER;
        const std::uint32_t rc = System::qvnWritePrinter(clientId, handle, buffer, bufferSize, *bytesWritten);
        exit.set([&] { return LogText() << " bytesWritten=" << *bytesWritten; });
        return rc;
      });
}

uint32_t QvnEndJobPrinter(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnEndJobPrinter", clientId, handle,
                    [&](ExitDetail&) { return System::qvnEndJobPrinter(clientId, handle); });
}

uint32_t QvnCancelJobPrinter(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnCancelJobPrinter", clientId, handle,
                    [&](ExitDetail&) { return System::qvnCancelJobPrinter(handle); });
}

uint32_t QvnExchangeNpaPrinter(uint32_t clientId, uint32_t handle, const uint8_t* request,
                               uint32_t requestLength, uint8_t* reply, uint32_t replySize,
                               uint32_t* replyLength) {
  return deviceCall("QvnExchangeNpaPrinter", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (request == nullptr || reply == nullptr || replyLength == nullptr) return QRN_ERROR_INVALID_PARAMETER;
    if (!NpaPacket(request, requestLength).isAllowedFromClient()) {
      exit.omitRc();
      return QRN_ERROR_ACCESS_DENIED;
    }
    return exchange(request, requestLength, reply, replySize, *replyLength, [&](Data& sent, Data& received) {
      return System::qvnExchangeNpaPrinter(clientId, handle, sent, received);
    });
  });
}

uint32_t QvnGetCachePrinter(uint32_t clientId, uint32_t handle, uint8_t* buffer, uint32_t bufferSize,
                            uint32_t* required) {
  return deviceCall("QvnGetCachePrinter", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (buffer == nullptr || required == nullptr) return QRN_ERROR_INVALID_PARAMETER;
    *required = 0;
    Data cache(kCacheSize, kCacheFill);
    const std::uint32_t rc = System::qvnGetCachePrinter(clientId, handle, cache);
    if (rc != QRN_ERROR_SUCCESS) cache = Data();
    exit.set([&] { return (LogText() << " cache=").hex(cache); });
    if (rc != QRN_ERROR_SUCCESS) return rc;
    return copyOut(cache.getBuffer(), cache.getLength(), buffer, bufferSize, *required);
  });
}

uint32_t QvnGetCurrentStatePrinter(uint32_t clientId, uint32_t handle, uint32_t* state) {
  return currentStateCall("QvnGetCurrentStatePrinter", clientId, handle, state,
                          " state=", [&](std::uint32_t& value) {
                            return System::qvnGetCurrentStatePrinter(clientId, handle, value);
                          });
}

uint32_t QvnGetLongPrinter(uint32_t /*clientId*/, uint32_t handle, const char* key, uint32_t* value) {
  return untracedCall([&]() -> std::uint32_t {
    if (handle == 0) return QRN_ERROR_INVALID_HANDLE;
    if (key == nullptr || value == nullptr) return QRN_ERROR_INVALID_PARAMETER;
    return System::qvnGetLongPrinter(handle, key, *value);
  });
}

uint32_t QvnGetStringPrinter(uint32_t /*clientId*/, uint32_t handle, const char* key, char* buffer,
                             uint32_t bufferSize, uint32_t* required) {
  return untracedCall([&]() -> std::uint32_t {
    if (handle == 0) return QRN_ERROR_INVALID_HANDLE;
    if (!canGetString(key, buffer, bufferSize, required)) return QRN_ERROR_INVALID_PARAMETER;
    return System::qvnGetStringPrinter(handle, key, buffer, bufferSize, *required);
  });
}

uint32_t QvnGetWideStringPrinter(uint32_t clientId, uint32_t handle, const char* key, uint8_t* buffer,
                                 uint32_t bufferSize, uint32_t* required) {
  return deviceCall("QvnGetWideStringPrinter", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (key == nullptr || buffer == nullptr || bufferSize == 0 || required == nullptr) {
      return QRN_ERROR_INVALID_PARAMETER;
    }
    const std::uint32_t rc = System::qvnGetWideStringPrinter(handle, key, buffer, bufferSize, *required);
    exit.set([&] { return (LogText() << " key=" << key << " value=").hex(buffer, bufferSize); });
    return rc;
  });
}

uint32_t QvnGetByteArrayPrinter(uint32_t clientId, uint32_t handle, const char* key, uint8_t* buffer,
                                uint32_t bufferSize, uint32_t* required) {
  return deviceCall("QvnGetByteArrayPrinter", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (key == nullptr || buffer == nullptr || required == nullptr) return QRN_ERROR_INVALID_PARAMETER;
    const std::uint32_t rc = System::qvnGetByteArrayPrinter(handle, key, buffer, bufferSize, *required);
    const std::uint32_t copied = rc == QRN_ERROR_SUCCESS ? *required : 0;
    exit.set([&] { return (LogText() << " key=" << key << " value=").hex(buffer, copied); });
    return rc;
  });
}

uint32_t QvnSetLongPrinter(uint32_t clientId, uint32_t handle, const char* key, uint32_t value) {
  return deviceCall("QvnSetLongPrinter", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (key == nullptr) return QRN_ERROR_INVALID_PARAMETER;
    const std::uint32_t rc = System::qvnSetLongPrinter(handle, key, value);
    exit.set([&] { return LogText() << " key=" << key << " value=" << value; });
    return rc;
  });
}

uint32_t QvnSetStringPrinter(uint32_t clientId, uint32_t handle, const char* key, const char* value,
                             uint32_t valueLength) {
  return deviceCall("QvnSetStringPrinter", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (key == nullptr || value == nullptr) return QRN_ERROR_INVALID_PARAMETER;
    // A value that ends earlier than its length says is not read beyond its end.
    const std::string text(value, strnlen(value, valueLength));
    const std::uint32_t rc = System::qvnSetStringPrinter(handle, key, text);
    exit.set([&] { return LogText() << " key=" << key << " value=" << text; });
    return rc;
  });
}

uint32_t QvnSetByteArrayPrinter(uint32_t /*clientId*/, uint32_t handle, const char* key, const uint8_t* bytes,
                                uint32_t length) {
  return untracedCall([&]() -> std::uint32_t {
    if (handle == 0) return QRN_ERROR_INVALID_HANDLE;
    if (key == nullptr || bytes == nullptr || length == 0) return QRN_ERROR_INVALID_PARAMETER;
    return System::qvnSetByteArrayPrinter(handle, key, Data(bytes, length));
  });
}

uint32_t QvnRegisterForAlertsPrinter(uint32_t clientId, uint32_t handle, uint32_t mask,
                                     QvnAlertCallback callback) {
  return deviceCall("QvnRegisterForAlertsPrinter", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
    if (callback == nullptr || clientId == 0) return QRN_ERROR_INVALID_PARAMETER;
    const std::uint32_t rc = System::qvnRegisterForAlertsPrinter(handle, {clientId, mask, callback});
    exit.set([&] { return (LogText() << " mask=").maskBytes(mask); });
    return rc;
  });
}

uint32_t QvnUnregisterForAlertsPrinter(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnUnregisterForAlertsPrinter", clientId, handle,
                    [&](ExitDetail&) { return System::qvnUnregisterForAlertsPrinter(clientId, handle); });
}

uint32_t QvnRegisterForNotificationsPrinter(uint32_t clientId, uint32_t handle, uint32_t category,
                                            QvnNotificationCallback callback) {
  return deviceCall(
      "QvnRegisterForNotificationsPrinter", clientId, handle, [&](ExitDetail& exit) -> std::uint32_t {
        if (callback == nullptr || clientId == 0) return QRN_ERROR_INVALID_PARAMETER;
        const std::uint32_t rc =
            System::qvnRegisterForNotificationsPrinter(handle, {clientId, category, Data(), callback});
        exit.set([&] { return LogText() << " category=" << category; });
        return rc;
      });
}

uint32_t QvnUnregisterForNotificationsPrinter(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnUnregisterForNotificationsPrinter", clientId, handle, [&](ExitDetail&) {
    return System::qvnUnregisterForNotificationsPrinter(clientId, handle);
  });
}
