// System: the library's services in the order of their birth and death, and what the exported functions
// forward to.
//
// Birth: Localize, the logger, the stores, Transports, PrinterTable and ScannerTable, DiscoveryManager,
// JobTracker, CpdScannerAsyncDataManager, DeviceFactories, the five device factories. HidTable, the managers
// of the HIDs, JobParameterStore and Reaper are made on first use. Death: what the live devices do and they
// themselves, JobTracker, CpdScannerAsyncDataManager, JobParameterStore, the managers of the HIDs,
// DeviceFactories, the device factories, Transports (which unloads the plug-ins), the tables,
// DiscoveryManager, PersistenceStore, the stores, Reaper, the logger, Localize.
#pragma once

#include <cstdint>
#include <string>

#include "common/process_service.h"
#include "device/client_registration.h"
#include "device/job_description.h"
#include "qvn/qvn.h"
#include "qvn/transport/data.h"

namespace qvn {

class System : public ProcessService<System> {
 public:
  // One for each exported function but the two that make and take down System, with its arguments, which it
  // has checked, as far as they matter. Device operations answer 6 when the handle's table has no object; the
  // others what the device, the store or the transport answers. What goes into a client's buffer follows the
  // rule of output_buffer.h.

  // Clients (system_clients.cpp). These work without a System.
  static std::uint32_t qvnGetClientId(std::uint32_t& clientId);
  // Accepted, and of no effect.
  static std::uint32_t qvnSetClientInfo();

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
  // Attributes are read as they are stored, whether the device is open or not, and written to the device.
  static std::uint32_t qvnGetLongPrinter(std::uint32_t handle, const char* key, std::uint32_t& value);
  static std::uint32_t qvnGetStringPrinter(std::uint32_t handle, const char* key, char* buffer,
                                           std::uint32_t bufferSize, std::uint32_t& required);
  // In 16-bit characters; sizes are in bytes.
  static std::uint32_t qvnGetWideStringPrinter(std::uint32_t handle, const char* key, std::uint8_t* buffer,
                                               std::uint32_t bufferSize, std::uint32_t& required);
  static std::uint32_t qvnGetByteArrayPrinter(std::uint32_t handle, const char* key, std::uint8_t* buffer,
                                              std::uint32_t bufferSize, std::uint32_t& required);
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
  static std::uint32_t qvnGetStringScanner(std::uint32_t handle, const char* key, char* buffer,
                                           std::uint32_t bufferSize, std::uint32_t& required);
  static std::uint32_t qvnGetLongScanner(std::uint32_t handle, const char* key, std::uint32_t& value);
  // Both send "<0>key</0><1>value</1>", a number as a signed decimal.
  static std::uint32_t qvnSetJobStringScanner(std::uint32_t clientId, std::uint32_t handle,
                                              const std::string& key, const std::string& value);
  static std::uint32_t qvnSetJobLongScanner(std::uint32_t clientId, std::uint32_t handle,
                                            const std::string& key, std::uint32_t value);
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
  static std::uint32_t qvnGetLongHid(std::uint32_t handle, const char* key, std::uint32_t& value);
  static std::uint32_t qvnGetStringHid(std::uint32_t handle, const char* key, char* buffer,
                                       std::uint32_t bufferSize, std::uint32_t& required);
  static std::uint32_t qvnGetCurrentStateHid(std::uint32_t handle, std::uint32_t& state);

  // Enumeration and discovery (system_enumeration.cpp).
  static std::uint32_t qvnEnumPrinters(std::uint32_t clientId, const std::string& transport,
                                       const std::string& filter, QvnDeviceFoundCallback callback);
  static std::uint32_t qvnEnumScanners(std::uint32_t clientId, const std::string& transport,
                                       QvnDeviceFoundCallback callback);
  static std::uint32_t qvnEnumHids(std::uint32_t clientId, const std::string& transport,
                                   QvnDeviceFoundCallback callback);
  // The handle of the stored device with that name; 1796 when there is none.
  static std::uint32_t qvnEnumSpecificPrinter(const std::string& portName, std::uint32_t& handle);
  static std::uint32_t qvnEnumSpecificScanner(const std::string& deviceName, std::uint32_t& handle);
  static std::uint32_t qvnEnumSpecificHid(const std::string& deviceName, std::uint32_t& handle);
  static std::uint32_t qvnDiscovery(const std::string& transport, const std::string& options);
  static std::uint32_t qvnValidatePortName(const std::string& name);
  static std::uint32_t qvnGetDiscoveryDefaults(const std::string& transport, char* buffer,
                                               std::uint32_t bufferSize, std::uint32_t& required);
  static std::uint32_t qvnSetDiscoveryDefaults(const std::string& transport, const char* defaults);

  // Print queues (system_queues.cpp).
  static std::uint32_t qvnEnumWindowsScanners(std::uint32_t clientId, const std::string& transport,
                                              QvnQueueFoundCallback callback);
  static std::uint32_t qvnEnumWindowsHids(std::uint32_t clientId, const std::string& transport,
                                          QvnQueueFoundCallback callback);

  // Installation (system_installation.cpp). The first two work without a System.
  // 0, or the code of the first registered transport that could not be installed.
  static std::uint32_t qvnInstall();
  static void qvnUninstall();
  static std::uint32_t qvnAddMonitor();
  static std::uint32_t qvnAddTransport(const std::string& moduleFileName);
  static std::uint32_t qvnRemoveTransport(const std::string& name);
  // Accepted, and of no effect.
  static std::uint32_t qvnSuspend();
  static std::uint32_t qvnResume();

  // Host information (system_host_info.cpp).
  static std::uint32_t qvnGetHostInfo(const std::string& key, char* buffer, std::uint32_t bufferSize,
                                      std::uint32_t& required);
  static std::uint32_t qvnSetHostInfo(const std::string& key, const std::string& value);

 private:
  friend class ProcessService<System>;
  // Takes down what it has made when it throws.
  System();
  ~System();
};

}  // namespace qvn
