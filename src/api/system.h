// System: the library's services in the order of their birth and death, and what the exported functions
// forward to.
//
// Birth: Localize, the logger, the stores, Transports, PrinterTable and ScannerTable, DiscoveryManager,
// JobTracker, CpdScannerAsyncDataManager, DeviceFactories, the device factories. HidTable, the managers of
// the HIDs, JobParameterStore and DeferredCalls are made on first use. Death: DeferredCalls, what the live
// devices' threads do, JobTracker, CpdScannerAsyncDataManager, JobParameterStore, the managers of the HIDs,
// DeviceFactories, Transports (which unloads the plug-ins), the tables, DiscoveryManager, PersistenceStore,
// the stores, the logger, Localize.
#pragma once

#include <cstdint>
#include <string>

#include "common/process_service.h"
#include "device/client_registration.h"
#include "device/job_description.h"
#include "hid/cpd_hid_factory.h"
#include "printer/bpd/bpd_printer_factory.h"
#include "printer/cpd/cpd_printer_factory.h"
#include "qvn/qvn.h"
#include "scanner/bpd/bpd_scanner_factory.h"
#include "scanner/cpd/cpd_scanner_factory.h"

namespace qvn {

class System : public ProcessService<System> {
 public:
  // The arguments of the exported functions, checked by them. Device operations answer 6 when the handle's
  // table has no object; the others what the device, the store or the transport answers.

  // Printers (system_printers.cpp).
  static std::uint32_t qvnOpenPrinter(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnClosePrinter(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnDeletePrinter(std::uint32_t handle);
  static std::uint32_t qvnStartJobPrinter(std::uint32_t clientId, std::uint32_t handle,
                                          const JobRequest& job);
  static std::uint32_t qvnWritePrinter(std::uint32_t clientId, std::uint32_t handle,
                                       const std::uint8_t* buffer, std::uint32_t bufferSize,
                                       std::uint32_t& bytesWritten);
  static std::uint32_t qvnEndJobPrinter(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnCancelJobPrinter(std::uint32_t handle);
  static std::uint32_t qvnExchangeNpaPrinter(std::uint32_t clientId, std::uint32_t handle, Data& request,
                                             Data& reply);
  static std::uint32_t qvnGetCachePrinter(std::uint32_t clientId, std::uint32_t handle, Data& cache);
  static std::uint32_t qvnGetCurrentStatePrinter(std::uint32_t clientId, std::uint32_t handle,
                                                 std::uint32_t& state);
  static std::uint32_t qvnSetLongPrinter(std::uint32_t handle, const std::string& key, std::uint32_t value);
  static std::uint32_t qvnSetStringPrinter(std::uint32_t handle, const std::string& key,
                                           const std::string& value);
  static std::uint32_t qvnSetByteArrayPrinter(std::uint32_t handle, const std::string& key,
                                              const Data& bytes);
  static std::uint32_t qvnRegisterForAlertsPrinter(std::uint32_t handle,
                                                   const AlertRegistration& registration);
  static std::uint32_t qvnUnregisterForAlertsPrinter(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnRegisterForNotificationsPrinter(std::uint32_t handle,
                                                          const NotificationRegistration& registration);
  static std::uint32_t qvnUnregisterForNotificationsPrinter(std::uint32_t clientId, std::uint32_t handle);

  // Scanners (system_scanners.cpp).
  static std::uint32_t qvnOpenScanner(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnCloseScanner(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnDeleteScanner(std::uint32_t handle);
  static std::uint32_t qvnStartJobScanner(std::uint32_t clientId, std::uint32_t handle, void* parameters);
  static std::uint32_t qvnEndJobScanner(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnCancelJobScanner(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnExchangeDataScanner(std::uint32_t clientId, std::uint32_t handle, Data& request,
                                              Data& reply);
  // Sends "<0>key</0><1>value</1>".
  static std::uint32_t qvnSetJobParameterScanner(std::uint32_t clientId, std::uint32_t handle,
                                                 const std::string& key, const std::string& value);
  static std::uint32_t qvnGetCurrentStateScanner(std::uint32_t handle, std::uint32_t& state);
  static std::uint32_t qvnRegisterForAsyncDataScanner(std::uint32_t handle,
                                                      const AsyncDataRegistration& registration);
  // Returns when the client is in no callback of the scanner any more, unless called from one.
  static std::uint32_t qvnUnregisterForAsyncDataScanner(std::uint32_t clientId, std::uint32_t handle);

  // HIDs (system_hids.cpp). The registrations are the process's, whether the HID is open or not.
  static std::uint32_t qvnOpenHid(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnCloseHid(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnDeleteHid(std::uint32_t handle);
  static std::uint32_t qvnRegisterForReportsHid(std::uint32_t handle, const ReportRegistration& registration);
  static std::uint32_t qvnUnregisterForReportsHid(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnRegisterForNotificationsHid(std::uint32_t handle,
                                                      const NotificationRegistration& registration);
  static std::uint32_t qvnUnregisterForNotificationsHid(std::uint32_t clientId, std::uint32_t handle);
  static std::uint32_t qvnGetCurrentStateHid(std::uint32_t handle, std::uint32_t& state);

  // Enumeration and discovery (system_enumeration.cpp).
  static std::uint32_t qvnEnumPrinters(std::uint32_t clientId, const std::string& transport,
                                       const std::string& filter, QvnDeviceFoundCallback callback);
  static std::uint32_t qvnEnumScanners(std::uint32_t clientId, const std::string& transport,
                                       QvnDeviceFoundCallback callback);
  static std::uint32_t qvnEnumHids(std::uint32_t clientId, const std::string& transport,
                                   QvnDeviceFoundCallback callback);
  static std::uint32_t qvnDiscovery(const std::string& transport, const std::string& options);
  static std::uint32_t qvnValidatePortName(const std::string& name);

  // Print queues (system_queues.cpp).
  static std::uint32_t qvnEnumWindowsScanners(std::uint32_t clientId, const std::string& transport,
                                              QvnQueueFoundCallback callback);
  static std::uint32_t qvnEnumWindowsHids(std::uint32_t clientId, const std::string& transport,
                                          QvnQueueFoundCallback callback);

  // Installation (system_installation.cpp). The first two work without a System.
  static void qvnInstall();
  static void qvnUninstall();
  static std::uint32_t qvnAddMonitor();

  // Host information (system_host_info.cpp).
  static std::uint32_t qvnGetHostInfo(const std::string& key, char* buffer, std::uint32_t bufferSize,
                                      std::uint32_t& required);
  static std::uint32_t qvnSetHostInfo(const std::string& key, const std::string& value);

 private:
  friend class ProcessService<System>;
  System();
  ~System();

  CpdPrinterFactory cpdPrinterFactory_;
  CpdScannerFactory cpdScannerFactory_;
  CpdHidFactory cpdHidFactory_;
  BpdPrinterFactory bpdPrinterFactory_;
  BpdScannerFactory bpdScannerFactory_;
};

}  // namespace qvn
