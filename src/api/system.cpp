#include "api/system.h"

#include "api/deferred_calls.h"
#include "api/discovery_manager.h"
#include "api/job_tracker.h"
#include "api/library_load.h"
#include "common/library_logger.h"
#include "common/localize.h"
#include "device/device_factories.h"
#include "device/hid_store.h"
#include "device/hid_table.h"
#include "device/persistence_store.h"
#include "device/printer_store.h"
#include "device/printer_table.h"
#include "device/scanner_store.h"
#include "device/scanner_table.h"
#include "printer/printer_object.h"
#include "transport/transports.h"

namespace qvn {
namespace {

constexpr std::uint32_t kNameWidth = 25;

// Runs before the members are made: they register with a service.
bool startServices() {
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
  DeviceFactories::getInstance();
  return true;
}

void stopServices() {
  DeferredCalls::destroyInstance();
  // A printer's writer may be writing through a transport that is about to be unloaded.
  for (const auto& printer : PrinterTable::getInstance().liveObjects()) printer->shutDown();

  JobTracker::destroyInstance();
  DeviceFactories::destroyInstance();
  Transports::destroyInstance();
  ScannerTable::destroyInstance();
  PrinterTable::destroyInstance();
  HidTable::destroyInstance();
  DiscoveryManager::destroyInstance();
  PersistenceStore::destroyInstance();
  HidStore::destroyInstance();
  ScannerStore::destroyInstance();
  PrinterStore::destroyInstance();
  BasicLogger::destroyInstance();
  Localize::destroyInstance();
}

}  // namespace

System::System()
    : cpdPrinterFactory_(startServices()), bpdPrinterFactory_(true, [](const std::string& attributes) {
        DiscoveryManager::getInstance().discoverSpecific(attributes);
      }) {}

System::~System() { stopServices(); }

}  // namespace qvn
