// What the exported scanner functions forward to.
#include "api/device_calls.h"
#include "api/stored_attributes.h"
#include "api/system.h"
#include "device/client_registration.h"
#include "device/scanner.h"
#include "device/store/scanner_store.h"
#include "device/store/scanner_table.h"
#include "kit/tag_map.h"
#include "qvn/result_codes.h"
#include "qvn/transport/data.h"
#include "scanner/scanner_object.h"

namespace qvn {
namespace {

using Scanners = DeviceCalls<ScannerTable, ScannerStore, ScannerObject>;

// Asks the scanner of a live object.
template <typename Operation>
std::uint32_t withScanner(std::uint32_t handle, Operation&& operation) {
  return Scanners::withLive(handle, [&](ScannerObject& object) {
    return object.hasDevice() ? operation(object.device()) : QRN_ERROR_INVALID_HANDLE;
  });
}

std::uint32_t setJobParameter(std::uint32_t clientId, std::uint32_t handle, const std::string& key,
                              const std::string& value) {
  TagMap parameter;
  if (!parameter.set("0", key) || !parameter.set("1", value)) return QRN_ERROR_INVALID_PARAMETER;
  Data data(parameter.text());
  return withScanner(handle, [&](Scanner& scanner) { return scanner.doExchangeData(clientId, data); });
}

}  // namespace

std::uint32_t System::qvnOpenScanner(std::uint32_t clientId, std::uint32_t handle) {
  return Scanners::open(clientId, handle, {QRN_ERROR_BUSY});
}

std::uint32_t System::qvnCloseScanner(std::uint32_t clientId, std::uint32_t handle) {
  return Scanners::close(clientId, handle);
}

std::uint32_t System::qvnDeleteScanner(std::uint32_t handle) { return Scanners::remove(handle); }

std::uint32_t System::qvnStartJobScanner(std::uint32_t clientId, std::uint32_t handle, void* parameters) {
  return withScanner(handle, [&](Scanner& scanner) { return scanner.doStartJob(clientId, parameters); });
}

std::uint32_t System::qvnEndJobScanner(std::uint32_t clientId, std::uint32_t handle) {
  return withScanner(handle, [&](Scanner& scanner) { return scanner.doEndJob(clientId); });
}

std::uint32_t System::qvnCancelJobScanner(std::uint32_t clientId, std::uint32_t handle) {
  return withScanner(handle, [&](Scanner& scanner) { return scanner.doCancelJob(clientId); });
}

std::uint32_t System::qvnExchangeDataScanner(std::uint32_t clientId, std::uint32_t handle, Data& request,
                                             Data& reply) {
  return withScanner(handle,
                     [&](Scanner& scanner) { return scanner.doExchangeData(clientId, request, reply); });
}

std::uint32_t System::qvnGetStringScanner(std::uint32_t handle, const char* key, char* buffer,
                                          std::uint32_t bufferSize, std::uint32_t& required) {
  return getStoredString<ScannerStore>(handle, key, buffer, bufferSize, required);
}

std::uint32_t System::qvnGetLongScanner(std::uint32_t handle, const char* key, std::uint32_t& value) {
  return getStoredLong<ScannerStore>(handle, key, value);
}

std::uint32_t System::qvnSetJobStringScanner(std::uint32_t clientId, std::uint32_t handle,
                                             const std::string& key, const std::string& value) {
  return setJobParameter(clientId, handle, key, value);
}

std::uint32_t System::qvnSetJobLongScanner(std::uint32_t clientId, std::uint32_t handle,
                                           const std::string& key, std::uint32_t value) {
  return setJobParameter(clientId, handle, key, std::to_string(static_cast<std::int32_t>(value)));
}

std::uint32_t System::qvnGetCurrentStateScanner(std::uint32_t handle, std::uint32_t& state) {
  return Scanners::withAcquired(handle, [&](ScannerObject& object) {
    return object.hasDevice() ? object.device().doGetCurrentState(state) : QRN_ERROR_INVALID_HANDLE;
  });
}

std::uint32_t System::qvnRegisterForAsyncDataScanner(std::uint32_t handle,
                                                     const AsyncDataRegistration& registration) {
  return withScanner(handle, [&](Scanner& scanner) { return scanner.doRegisterForAsyncData(registration); });
}

std::uint32_t System::qvnUnregisterForAsyncDataScanner(std::uint32_t clientId, std::uint32_t handle) {
  return withScanner(handle, [&](Scanner& scanner) {
    const std::uint32_t rc = scanner.doUnregisterForAsyncData(clientId);
    scanner.waitForCallbacks(clientId);
    return rc;
  });
}

}  // namespace qvn
