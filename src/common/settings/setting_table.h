// The numbers among the settings that the library reads: the one place that has their keys and defaults. The
// defaults of what it logs per component stand in common/logging/log_component.cpp, those of a transport in
// the transport.
#pragma once

#include <cstdint>

namespace qvn {

// The keys that settings lie under.
namespace setting_key {
inline constexpr char kSettings[] = "Settings\\";
inline constexpr char kUsb1Settings[] = "Usb1\\Settings\\";
inline constexpr char kLogger[] = "Logger";
inline constexpr char kLocalTransports[] = "Transports\\Local";
inline constexpr char kNetworkTransports[] = "Transports\\Network";
inline constexpr char kSupportedDevices[] = "Runtime\\SupportedDevices\\";
}  // namespace setting_key

struct LongSetting {
  const char* key;
  const char* name;
  std::uint32_t byDefault;
};

// Milliseconds, unless it says otherwise; what is 0 by default is turned on by any other value.
namespace setting {
inline constexpr LongSetting kCpdPrinterMwo{setting_key::kSettings, "CpdPrinterMwo", 1};
inline constexpr LongSetting kMwoBufferHwm{setting_key::kSettings, "MwoBufferHwm", 10};  // buffers
inline constexpr LongSetting kMwoBufferLwm{setting_key::kSettings, "MwoBufferLwm", 5};   // buffers
inline constexpr LongSetting kAioLockEnabled{setting_key::kSettings, "AIOLockEnabled", 0};
inline constexpr LongSetting kCpdPrinterDate{setting_key::kSettings, "CpdPrinterDate", 0};
inline constexpr LongSetting kTeojInterval{setting_key::kSettings, "TeojInterval", 1000};
inline constexpr LongSetting kTeojDuration{setting_key::kSettings, "TeojDuration", 60000};
inline constexpr LongSetting kJobAccountMarker{setting_key::kSettings, "JobAccountMarker", 500};  // bytes
inline constexpr LongSetting kScanCancelWaitDuration{setting_key::kSettings, "ScanCancelWaitDuration", 60000};
inline constexpr LongSetting kCpdScanPerformanceNotifications{setting_key::kSettings,
                                                              "CpdScanPerformanceNotifications", 0};
inline constexpr LongSetting kDeleteStoreOnUninstall{setting_key::kSettings, "DeleteStoreOnUninstall", 0};

inline constexpr LongSetting kStartLog{setting_key::kLogger, "startLog", 0};
inline constexpr LongSetting kClocktimeInHeader{setting_key::kLogger, "Clocktime_In_Header", 1};
inline constexpr LongSetting kProcIdInHeader{setting_key::kLogger, "Proc_Id_In_Header", 0};
inline constexpr LongSetting kThreadIdInHeader{setting_key::kLogger, "Thread_Id_In_Header", 0};
}  // namespace setting

}  // namespace qvn
