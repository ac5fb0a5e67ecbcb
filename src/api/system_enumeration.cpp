// What the exported enumeration and discovery functions forward to.
#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "api/device_lookup.h"
#include "api/discovery_manager.h"
#include "api/enumeration_callback.h"
#include "api/system.h"
#include "common/exception.h"
#include "common/logging/trace_scope.h"
#include "common/text.h"
#include "device/device_identity.h"
#include "device/store/hid_store.h"
#include "device/store/printer_store.h"
#include "device/store/scanner_store.h"
#include "qvn/qvn.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/discoverer.h"
#include "transport/call_transport.h"
#include "transport/transports.h"

namespace qvn {
namespace {

bool contains(const std::vector<std::string>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// The filter of an enumeration of printers: the attributes that it names, with their values.
class Filter {
 public:
  explicit Filter(const std::string& text) {
    for (const char* const descriptor : {attribute::kAddress, attribute::kPortname, attribute::kPortType}) {
      std::string value;
      if (AttributeCodec::getString(text, descriptor, value) == QRN_ERROR_SUCCESS) {
        wanted_.emplace_back(descriptor, value);
      }
    }
  }

  // Whether the text carries all these values, compared without case.
  bool matches(std::string_view text) const {
    return std::all_of(wanted_.begin(), wanted_.end(), [&](const auto& wanted) {
      std::string value;
      return AttributeCodec::getString(text, wanted.first, value) == QRN_ERROR_SUCCESS &&
             equalsIgnoringCase(value, wanted.second);
    });
  }

 private:
  std::vector<std::pair<const char*, std::string>> wanted_;
};

// Tells the callback of each scanner or HID of the transports; `function` names the exported one in the log.
std::uint32_t enumerate(const char* function, const std::vector<std::string>& texts, std::uint32_t clientId,
                        const std::string& transport, QvnDeviceFoundCallback callback) {
  const std::vector<std::string> names = Transports::getInstance().getTransportNames(transport);
  std::uint32_t item = 0;
  for (const std::string& text : texts) {
    ++item;
    logDetail(log_component::server(), [&] {
      return LogText() << "System::" << function << ": item " << item << " has transport: " << text;
    });
    const DeviceIdentity device = DeviceIdentity::of(text);
    if (!device.handle || !device.transport || !contains(names, *device.transport)) continue;
    tellFound(clientId, [&] { callback(clientId, *device.handle); });
    logDetail(log_component::server(), [&] {
      return LogText() << "System::" << function << ": enum device " << *device.handle << " of type "
                       << *device.transport;
    });
  }
  return QRN_ERROR_SUCCESS;
}

}  // namespace

std::uint32_t System::qvnEnumPrinters(std::uint32_t clientId, const std::string& transport,
                                      const std::string& filter, QvnDeviceFoundCallback callback) {
  const Filter wanted(filter);
  const std::vector<std::string> names = Transports::getInstance().getTransportNames(transport);
  struct Found {
    std::uint32_t handle;
    std::string textWithoutHandle;
  };
  std::vector<Found> inStoreOrder;
  PrinterStore::getInstance().forEach([&](std::string_view text) {
    if (!wanted.matches(text)) return;
    const DeviceIdentity device = DeviceIdentity::of(text);
    if (!device.handle) {
      inStoreOrder.push_back({0, std::string(text)});
    } else if (device.transport && contains(names, *device.transport)) {
      inStoreOrder.push_back({*device.handle, {}});
    }
  });
  // Asked once, not for each of what may be thousands.
  const bool isLogged = BasicLogger::isEnabled(log_component::server(), log_level::kDetail);
  for (const auto& [handle, textWithoutHandle] : inStoreOrder) {
    if (!textWithoutHandle.empty()) {
      logError(log_component::server(), [&text = textWithoutHandle] {
        return LogText() << "TransportString is missing device key: " << text;
      });
      continue;
    }
    if (isLogged) {
      logDetail(log_component::server(), [&, handle = handle] {
        return LogText() << "System::QvnEnumPrinters()"
                         << " callback(" << clientId << "," << handle << ")";
      });
    }
    tellFound(clientId, [&, handle = handle] { callback(clientId, handle); });
  }
  return QRN_ERROR_SUCCESS;
}

std::uint32_t System::qvnEnumScanners(std::uint32_t clientId, const std::string& transport,
                                      QvnDeviceFoundCallback callback) {
  std::vector<std::string> texts;
  ScannerStore::getInstance().enumerate(texts);
  return enumerate("qvnEnumScanners", texts, clientId, transport, callback);
}

std::uint32_t System::qvnEnumHids(std::uint32_t clientId, const std::string& transport,
                                  QvnDeviceFoundCallback callback) {
  std::vector<std::string> texts;
  HidStore::getInstance().enumerate(texts);
  return enumerate("qvnEnumHids", texts, clientId, transport, callback);
}

std::uint32_t System::qvnEnumSpecificPrinter(const std::string& portName, std::uint32_t& handle) {
  return findByName<PrinterStore>(portName, handle);
}

std::uint32_t System::qvnEnumSpecificScanner(const std::string& deviceName, std::uint32_t& handle) {
  return findByName<ScannerStore>(deviceName, handle);
}

std::uint32_t System::qvnEnumSpecificHid(const std::string& deviceName, std::uint32_t& handle) {
  return findByName<HidStore>(deviceName, handle);
}

std::uint32_t System::qvnDiscovery(const std::string& transport, const std::string& options) {
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  for (const std::string& name : Transports::getInstance().getTransportNames(transport)) {
    rc = DiscoveryManager::getInstance().discover(name, options);
    if (rc == QRN_ERROR_SUCCESS) continue;
    logDetail(log_component::server(), [&] {
      return LogText() << "QvnDiscovery()"
                       << " DiscoveryManager.discover(" << name << ")"
                       << " error=" << rc;
    });
  }
  return rc;
}

std::uint32_t System::qvnValidatePortName(const std::string& name) {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(), [&] {
    return LogText() << "System::qvnValidatePortName()"
                     << "  port=" << name;
  });
  bool used = false;
  PrinterStore::getInstance().forEach([&](std::string_view text) {
    std::string portName;
    used = used || (AttributeCodec::getString(text, attribute::kPortname, portName) == QRN_ERROR_SUCCESS &&
                    portName == name);
  });
  const std::uint32_t rc = used ? QRN_ERROR_DUP_NAME : QRN_ERROR_SUCCESS;
  trace.setRc(rc);
  return rc;
}

std::uint32_t System::qvnGetDiscoveryDefaults(const std::string& transport, char* buffer,
                                              std::uint32_t bufferSize, std::uint32_t& required) {
  required = 0;
  buffer[0] = '\0';
  const auto discoverer = Transports::getInstance().getDiscoverer(transport);
  return callTransport("getDefaults",
                       [&] { return discoverer.service->getDefaults(buffer, bufferSize, &required); });
}

std::uint32_t System::qvnSetDiscoveryDefaults(const std::string& transport, const char* defaults) {
  const auto discoverer = Transports::getInstance().getDiscoverer(transport);
  return callTransport("setDefaults", [&] { return discoverer.service->setDefaults(defaults); });
}

}  // namespace qvn
