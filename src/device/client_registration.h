// What a client leaves with a device to be called back.
#pragma once

#include <cstdint>

#include "qvn/qvn.h"
#include "qvn/transport/data.h"

namespace qvn {

struct AlertRegistration {
  std::uint32_t clientId = 0;
  std::uint32_t mask = 0;
  QvnAlertCallback callback = nullptr;
};

struct NotificationRegistration {
  std::uint32_t clientId = 0;
  std::uint32_t category = 0;
  Data data;
  QvnNotificationCallback callback = nullptr;
};

struct AsyncDataRegistration {
  std::uint32_t mask = 0;
  std::uint32_t clientId = 0;
  QvnScanDataCallback callback = nullptr;
};

struct ReportRegistration {
  std::uint32_t clientId = 0;
  QvnHidReportCallback callback = nullptr;
};

}  // namespace qvn
