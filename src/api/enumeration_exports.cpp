// The exported functions that enumerate and discover devices.
#include <algorithm>
#include <string>

#include "api/exported_call.h"
#include "api/system.h"
#include "qvn/qvn.h"
#include "transport/transport_names.h"

using namespace qvn;

namespace {

using EnumSpecific = std::uint32_t (*)(const std::string& name, std::uint32_t& handle);

// When there is no such device, of which `notFound` tells in the log, the local transports look for devices,
// and it is looked up once more.
std::uint32_t enumSpecificCall(const char* function, const char* notFound, std::uint32_t clientId,
                               const char* name, std::uint32_t* handle, EnumSpecific forward) {
  return tracedCall([=] { return entryText(function, clientId); },
                    [&](ExitDetail& exit) -> std::uint32_t {
                      if (name == nullptr || handle == nullptr) return QRN_ERROR_INVALID_PARAMETER;
                      std::uint32_t rc = forward(name, *handle);
                      if (rc == QRN_ERROR_UNKNOWN_PORT) {
                        if (exit.isWanted()) {
                          logDetail(log_component::server(), [=] {
                            return entryText(function, clientId)
                                   << " " << function << "() " << notFound << ", performing local discovery";
                          });
                        }
                        QvnDiscovery(clientId, kLocalTransport, "");
                        rc = forward(name, *handle);
                      }
                      exit.set([&] { return LogText() << " name=" << name << " handle=" << *handle; });
                      return rc;
                    });
}

}  // namespace

uint32_t QvnEnumPrinters(uint32_t clientId, const char* transport, const char* filter,
                         QvnDeviceFoundCallback callback) {
  return tracedCall([=] { return entryText("QvnEnumPrinters", clientId); },
                    [&](ExitDetail&) -> std::uint32_t {
                      if (transport == nullptr || callback == nullptr) return QRN_ERROR_INVALID_PARAMETER;
                      return System::qvnEnumPrinters(clientId, transport, orEmpty(filter), callback);
                    });
}

uint32_t QvnEnumScanners(uint32_t clientId, const char* transport, const char* /*ignored*/,
                         QvnDeviceFoundCallback callback) {
  return tracedCall([=] { return entryText("QvnEnumScanners", clientId); },
                    [&](ExitDetail&) -> std::uint32_t {
                      if (transport == nullptr || callback == nullptr) return QRN_ERROR_INVALID_PARAMETER;
                      return System::qvnEnumScanners(clientId, transport, callback);
                    });
}

uint32_t QvnEnumHids(uint32_t clientId, const char* transport, const char* /*ignored*/,
                     QvnDeviceFoundCallback callback) {
  return tracedCall([=] { return entryText("QvnEnumHids", clientId); },
                    [&](ExitDetail&) -> std::uint32_t {
                      if (transport == nullptr || callback == nullptr) return QRN_ERROR_INVALID_PARAMETER;
                      return System::qvnEnumHids(clientId, transport, callback);
                    });
}

uint32_t QvnEnumWindowsScanners(uint32_t clientId, const char* transport, QvnQueueFoundCallback callback) {
  return tracedCall([=] { return entryText("QvnEnumWindowsScanners", clientId); },
                    [&](ExitDetail&) -> std::uint32_t {
                      if (transport == nullptr || callback == nullptr) return QRN_ERROR_INVALID_PARAMETER;
                      return System::qvnEnumWindowsScanners(clientId, transport, callback);
                    });
}

uint32_t QvnEnumWindowsHids(uint32_t clientId, const char* transport, QvnQueueFoundCallback callback) {
  return tracedCall(
      [=] {
        return LogText() << "QvnEnumWindowsHids(clientId=" << clientId << ", transport=" << transport << ")";
      },
      [&](ExitDetail&) -> std::uint32_t {
        if (transport == nullptr || callback == nullptr) return QRN_ERROR_INVALID_PARAMETER;
        return System::qvnEnumWindowsHids(clientId, transport, callback);
      });
}

uint32_t QvnEnumSpecificPrinter(uint32_t clientId, const char* portName, uint32_t* handle) {
  return enumSpecificCall("QvnEnumSpecificPrinter", "failed", clientId, portName, handle,
                          System::qvnEnumSpecificPrinter);
}

uint32_t QvnEnumSpecificScanner(uint32_t clientId, const char* deviceName, uint32_t* handle) {
  return enumSpecificCall("QvnEnumSpecificScanner", "rc=1796", clientId, deviceName, handle,
                          System::qvnEnumSpecificScanner);
}

uint32_t QvnEnumSpecificHid(uint32_t clientId, const char* deviceName, uint32_t* handle) {
  return enumSpecificCall("QvnEnumSpecificHid", "rc=1796", clientId, deviceName, handle,
                          System::qvnEnumSpecificHid);
}

uint32_t QvnDiscovery(uint32_t clientId, const char* transport, const char* options) {
  return tracedCall([=] { return entryText("QvnDiscovery", clientId); },
                    [&](ExitDetail& exit) -> std::uint32_t {
                      if (transport == nullptr) return QRN_ERROR_INVALID_PARAMETER;
                      const std::uint32_t rc = System::qvnDiscovery(transport, orEmpty(options));
                      exit.set([&] { return LogText() << " transport=" << transport; });
                      return rc;
                    });
}

uint32_t QvnValidatePortName(uint32_t clientId, const char* name) {
  return tracedCall([=] { return entryText("QvnValidatePortName", clientId); },
                    [&](ExitDetail&) -> std::uint32_t {
                      if (name == nullptr) return QRN_ERROR_INVALID_PARAMETER;
                      return System::qvnValidatePortName(name);
                    });
}

uint32_t QvnGetDiscoveryDefaults(uint32_t clientId, const char* transport, char* buffer, uint32_t bufferSize,
                                 uint32_t* required) {
  return tracedCall(
      [=] { return entryText("QvnGetDiscoveryDefaults", clientId); },
      [&](ExitDetail& exit) -> std::uint32_t {
        if (transport == nullptr || buffer == nullptr || bufferSize == 0 || required == nullptr) {
          return QRN_ERROR_INVALID_PARAMETER;
        }
        const std::uint32_t rc = System::qvnGetDiscoveryDefaults(transport, buffer, bufferSize, *required);
        exit.set([&] {
          LogText text;
          text << " transport=" << transport << " default=";
          return text.hex(buffer, std::min(*required, bufferSize));
        });
        return rc;
      });
}

uint32_t QvnSetDiscoveryDefaults(uint32_t clientId, const char* transport, const char* defaults) {
  return tracedCall(
      [=] { return entryText("QvnSetDiscoveryDefaults", clientId); },
      [&](ExitDetail& exit) -> std::uint32_t {
        if (transport == nullptr || defaults == nullptr) return QRN_ERROR_INVALID_PARAMETER;
        const std::uint32_t rc = System::qvnSetDiscoveryDefaults(transport, defaults);
        exit.set([&] { return LogText() << " transport=" << transport << " defaults=" << defaults; });
        return rc;
      });
}
