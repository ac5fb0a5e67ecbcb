#include "api/system.h"

#include "api/discovery_manager.h"
#include "api/job_tracker.h"
#include "api/library_load.h"
#include "common/clients/operation_lock.h"
#include "common/clients/reaper.h"
#include "common/logging/basic_logger.h"
#include "common/logging/library_logger.h"
#include "common/settings/localize.h"
#include "device/factories/device_factories.h"
#include "device/hid.h"
#include "device/scanner.h"
#include "device/store/hid_store.h"
#include "device/store/hid_table.h"
#include "device/store/persistence_store.h"
#include "device/store/printer_store.h"
#include "device/store/printer_table.h"
#include "device/store/scanner_store.h"
#include "device/store/scanner_table.h"
#include "hid/cpd_hid_factory.h"
#include "hid/hid_notification_manager.h"
#include "hid/hid_object.h"
#include "hid/hid_report_manager.h"
#include "printer/bpd/bpd_printer_factory.h"
#include "printer/cpd/cpd_printer_factory.h"
#include "printer/printer_object.h"
#include "qvn/result_codes.h"
#include "scanner/bpd/bpd_scanner_factory.h"
#include "scanner/bpd/job/job_parameter_store.h"
#include "scanner/cpd/cpd_scanner_async_data_manager.h"
#include "scanner/cpd/cpd_scanner_factory.h"
#include "scanner/scanner_object.h"
#include "transport/transports.h"

namespace qvn {
namespace {

constexpr std::uint32_t kNameWidth = 25;

void startServices() {
  Localize::createInstance(moduleHandle());

  auto logger = std::make_unique<LibraryLogger>();
  logger->setNameWidth(kNameWidth);
  BasicLogger::setInstance(std::move(logger));

  PrinterStore::getInstance();
  ScannerStore::getInstance();
  HidStore::getInstance();
  PersistenceStore::getInstance();

  Transports::getInstance().setDiscover([](const std::string& transport, const std::string& options) {
    return DiscoveryManager::getInstance().discover(transport, options);
  });

  PrinterTable::getInstance();
  ScannerTable::getInstance();
  DiscoveryManager::getInstance();
  JobTracker::getInstance();
  CpdScannerAsyncDataManager::getInstance();
  DeviceFactories::getInstance();

  // Each registers itself for its family.
  CpdPrinterFactory::getInstance();
  CpdScannerFactory::getInstance();
  CpdHidFactory::getInstance();
  BpdPrinterFactory::getInstance().setVerify(
      [](const std::string& attributes) { DiscoveryManager::getInstance().discoverSpecific(attributes); });
  BpdScannerFactory::getInstance();
}

// Ends what the live devices do, and then the devices.
template <typename Table>
void shutDown(Table& table) {
  for (const auto& object : table.liveObjects()) {
    resultOf([&] {
      object->shutDown();
      return QRN_ERROR_SUCCESS;
    });
  }
  table.clear();
}

void stopServices() {
  // The transports' threads deliver what devices send to the clients that the managers know, and a printer's
  // writer may be writing through a transport that is about to be unloaded.
  shutDown(PrinterTable::getInstance());
  shutDown(ScannerTable::getInstance());
  shutDown(HidTable::getInstance());
  Reaper::getInstance().flush();
  JobTracker::destroyInstance();
  CpdScannerAsyncDataManager::destroyInstance();
  JobParameterStore::destroyInstance();
  HidReportManager::destroyInstance();
  HidNotificationManager::destroyInstance();
  DeviceFactories::destroyInstance();
  BpdScannerFactory::destroyInstance();
  BpdPrinterFactory::destroyInstance();
  CpdHidFactory::destroyInstance();
  CpdScannerFactory::destroyInstance();
  CpdPrinterFactory::destroyInstance();
  Transports::destroyInstance();
  ScannerTable::destroyInstance();
  PrinterTable::destroyInstance();
  HidTable::destroyInstance();
  DiscoveryManager::destroyInstance();
  PersistenceStore::destroyInstance();
  HidStore::destroyInstance();
  ScannerStore::destroyInstance();
  PrinterStore::destroyInstance();
  Reaper::destroyInstance();
  BasicLogger::destroyInstance();
  Localize::destroyInstance();
}

}  // namespace

System::System() {
  try {
    startServices();
  } catch (...) {
    stopServices();
    throw;
  }
}

System::~System() { stopServices(); }

}  // namespace qvn
