// What the exported enumeration and discovery functions forward to.
#include <algorithm>
#include <vector>

#include "api/discovery_manager.h"
#include "api/system.h"
#include "common/text.h"
#include "common/trace_scope.h"
#include "device/hid_store.h"
#include "device/printer_store.h"
#include "device/scanner_store.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "transport/transports.h"

namespace qvn {
namespace {

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Keeps the texts that carry the filter's value of the attribute; all of them when the filter has none.
void filterBy(const std::string& filter, const char* descriptor, std::vector<std::string>& texts) {
  std::string wanted;
  if (AttributeCodec::getString(filter, descriptor, wanted) != QRN_ERROR_SUCCESS) return;
  std::erase_if(texts, [&](const std::string& text) {
    std::string value;
    return AttributeCodec::getString(text, descriptor, value) != QRN_ERROR_SUCCESS ||
           !equalsIgnoringCase(value, wanted);
  });
}

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
    std::uint32_t handle = 0;
    std::string name;
    if (AttributeCodec::getLong(text, attribute::kHandle, handle) != QRN_ERROR_SUCCESS ||
        AttributeCodec::getString(text, attribute::kTransport, name) != QRN_ERROR_SUCCESS ||
        !contains(names, name)) {
      continue;
    }
    callback(clientId, handle);
    logDetail(log_component::server(), [&] {
      return LogText() << "System::" << function << ": enum device " << handle << " of type " << name;
    });
  }
  return QRN_ERROR_SUCCESS;
}

}  // namespace

std::uint32_t System::qvnEnumPrinters(std::uint32_t clientId, const std::string& transport,
                                      const std::string& filter, QvnDeviceFoundCallback callback) {
  std::vector<std::string> texts;
  PrinterStore::getInstance().enumerate(texts);
  for (const char* const descriptor : {attribute::kAddress, attribute::kPortname, attribute::kPortType}) {
    filterBy(filter, descriptor, texts);
  }
  const std::vector<std::string> names = Transports::getInstance().getTransportNames(transport);
  for (const std::string& text : texts) {
    std::uint32_t handle = 0;
    if (AttributeCodec::getLong(text, attribute::kHandle, handle) != QRN_ERROR_SUCCESS) {
      logError(log_component::server(),
               [&] { return LogText() << "TransportString is missing device key: " << text; });
      continue;
    }
    std::string name;
    if (AttributeCodec::getString(text, attribute::kTransport, name) != QRN_ERROR_SUCCESS ||
        !contains(names, name)) {
      continue;
    }
    logDetail(log_component::server(), [&] {
      return LogText() << "System::QvnEnumPrinters()"
                       << " callback(" << clientId << "," << handle << ")";
    });
    callback(clientId, handle);
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
  std::vector<std::string> texts;
  PrinterStore::getInstance().enumerate(texts);
  const bool used = std::any_of(texts.begin(), texts.end(), [&](const std::string& text) {
    std::string portName;
    return AttributeCodec::getString(text, attribute::kPortname, portName) == QRN_ERROR_SUCCESS &&
           portName == name;
  });
  const std::uint32_t rc = used ? QRN_ERROR_DUP_NAME : QRN_ERROR_SUCCESS;
  trace.setRc(rc);
  return rc;
}

}  // namespace qvn
