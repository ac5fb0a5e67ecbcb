// What the exported functions that enumerate print queues forward to: the queues whose device is of the
// default model.
#include <vector>

#include "api/device_lookup.h"
#include "api/enumeration_callback.h"
#include "api/stored_attributes.h"
#include "api/system.h"
#include "common/logging/trace_scope.h"
#include "common/settings/localize.h"
#include "device/store/hid_store.h"
#include "device/store/printer_store.h"
#include "device/store/scanner_store.h"
#include "platform/base/error.h"
#include "platform/process/spooler.h"
#include "qvn/qvn.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attributes.h"
#include "transport/transport_names.h"

namespace qvn {
namespace {

constexpr std::size_t kMaxTransportLength = 63;

template <typename Store>
bool isDefaultModel(std::uint32_t handle) {
  std::uint32_t vendor = 0;
  std::uint32_t product = 0;
  return getStoredLong<Store>(handle, attribute::kVid, vendor) == QRN_ERROR_SUCCESS &&
         getStoredLong<Store>(handle, attribute::kPid, product) == QRN_ERROR_SUCCESS &&
         vendor * 0x10000 + product == Localize::getInstance().getDefaultModelId();
}

template <typename Store>
std::uint32_t storedTransport(std::uint32_t handle, std::string& transport) {
  const std::uint32_t rc = getStoredString<Store>(handle, attribute::kTransport, transport);
  return transport.size() > kMaxTransportLength ? QRN_ERROR_INSUFFICIENT_BUFFER : rc;
}

// Tells the callback of each local queue on a device of the kind that is of the default model and of the
// transport. A queue on a printer of that model may be on a device that is not known yet: then the transports
// look for new ones, once a call.
template <typename Store>
std::uint32_t enumerateQueues(const char* function, const char* handleName, std::uint32_t clientId,
                              const std::string& transport, QvnQueueFoundCallback callback) {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(), [&] {
    return LogText() << function << "(clientId=" << clientId << ", transport=" << transport << ")";
  });
  std::vector<platform::PrintQueue> queues;
  const platform::ErrorCode error = platform::localPrintQueues(queues);
  if (error != platform::kSuccess) {
    trace.logDetail([&] { return LogText() << " EnumPrinters failed, lastError=" << error; });
    trace.setRc(error);
    return QRN_ERROR_SUCCESS;
  }
  bool discovered = false;
  for (const platform::PrintQueue& queue : queues) {
    std::uint32_t handle = 0;
    std::uint32_t rc = findByName<Store>(queue.portName, handle);
    if (rc != QRN_ERROR_SUCCESS) {
      trace.logDetail(
          [&] { return LogText() << " unable to find " << handleName << " for port=" << queue.portName; });
      std::uint32_t printer = 0;
      if (!discovered && findByName<PrinterStore>(queue.portName, printer) == QRN_ERROR_SUCCESS &&
          isDefaultModel<PrinterStore>(printer)) {
        trace.logDetail([] { return LogText() << " calling discovering to find new devices"; });
        System::qvnDiscovery(transport, "");
        discovered = true;
        rc = findByName<Store>(queue.portName, handle);
      }
    }
    if (rc != QRN_ERROR_SUCCESS || !isDefaultModel<Store>(handle)) continue;
    std::string itsTransport;
    rc = storedTransport<Store>(handle, itsTransport);
    if (rc != QRN_ERROR_SUCCESS) {
      trace.logDetail([&] { return LogText() << " cannot get transport string, rc=" << rc; });
    } else if (transportMatches(transport, itsTransport)) {
      trace.logDetail([&] {
        return LogText() << " Found printerObject=" << queue.printerName << ", port=" << queue.portName
                         << ", handle=" << handle;
      });
      tellFound(clientId, [&] { callback(clientId, queue.printerName.c_str(), queue.portName.c_str()); });
    }
  }
  return QRN_ERROR_SUCCESS;
}

}  // namespace

std::uint32_t System::qvnEnumWindowsScanners(std::uint32_t clientId, const std::string& transport,
                                             QvnQueueFoundCallback callback) {
  return enumerateQueues<ScannerStore>("qvnEnumWindowsScanners", "scannerHandle", clientId, transport,
                                       callback);
}

std::uint32_t System::qvnEnumWindowsHids(std::uint32_t clientId, const std::string& transport,
                                         QvnQueueFoundCallback callback) {
  return enumerateQueues<HidStore>("qvnEnumWindowsHids", "hidHandle", clientId, transport, callback);
}

}  // namespace qvn
