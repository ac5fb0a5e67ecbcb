// A transport module with one fault, chosen when it is built.
#include <cstring>
#include <stdexcept>

#include "platform/base/error.h"
#include "qvn/transport/plugin.h"

#ifdef QVN_FAULT_OTHER_ABI
QVN_TRANSPORT_EXPORT std::uint32_t TransportGetAbiVersion() { return QVN_TRANSPORT_ABI_VERSION + 1; }
#endif

#ifdef QVN_FAULT_UNDEFINED
extern "C" std::uint32_t isNowhere();
#endif

QVN_TRANSPORT_EXPORT std::uint32_t TransportGetInfo(char* buffer, std::uint32_t size, std::uint32_t*) {
#if defined(QVN_FAULT_BAD_INFO)
  std::memset(buffer, 'x', size);
#elif defined(QVN_FAULT_OTHER_KIND)
  std::strncpy(buffer, "<Transport>ODD</Transport><TransportType>PIGEON</TransportType>", size);
#else
  std::strncpy(buffer, "<Transport>BROKEN</Transport><TransportType>LOCAL_TRANSPORT</TransportType>", size);
#endif
  return 0;
}

#ifndef QVN_FAULT_NO_ENTRY
QVN_TRANSPORT_EXPORT std::uint32_t TransportInitialize() {
#ifdef QVN_FAULT_FAILS_TO_INITIALIZE
  qvn::platform::setLastError(31);
  return 1;
#else
  return 0;
#endif
}
#endif

QVN_TRANSPORT_EXPORT std::uint32_t TransportUninitialize() { return 0; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportInstall() {
#if defined(QVN_FAULT_FAILS_TO_INSTALL)
  return 31;
#elif defined(QVN_FAULT_UNDEFINED)
  return isNowhere();
#else
  return 0;
#endif
}
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninstall() { return 0; }

namespace {

template <typename Manager>
Manager* manager() {
#ifdef QVN_FAULT_THROWS
  throw std::runtime_error("broken");
#else
  return nullptr;
#endif
}

}  // namespace

QVN_TRANSPORT_EXPORT qvn::ConnectionManager* TransportGetConnectionManager() {
  return manager<qvn::ConnectionManager>();
}
QVN_TRANSPORT_EXPORT qvn::VisitorManager* TransportGetVisitorManager() {
  return manager<qvn::VisitorManager>();
}
QVN_TRANSPORT_EXPORT qvn::Discoverer* TransportGetDiscoverer() { return manager<qvn::Discoverer>(); }
