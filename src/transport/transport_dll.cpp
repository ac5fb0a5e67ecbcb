#include "transport/transport_dll.h"

#include "common/exception.h"
#include "platform/base/error.h"
#include "qvn/result_codes.h"
#include "transport/call_transport.h"

namespace qvn {

void TransportDllHandler::onLoad(const TransportDll& dll) {
  if (void* const address = dll.findProcAddress(transport_entry::kGetAbiVersion)) {
    const auto getAbiVersion = reinterpret_cast<transport_entry::GetAbiVersion*>(address);
    const std::uint32_t version = callTransport(transport_entry::kGetAbiVersion, getAbiVersion);
    if (version != QVN_TRANSPORT_ABI_VERSION) {
      throw Win32Exception("Transport interface version=" + std::to_string(version) + " of DLL=" +
                               dll.getName() + " is not " + std::to_string(QVN_TRANSPORT_ABI_VERSION),
                           QRN_ERROR_REVISION_MISMATCH, "TransportDllHandler", 22);
    }
  }
  const auto initialize = dll.entry<transport_entry::Initialize>(transport_entry::kInitialize);
  platform::setLastError(platform::kSuccess);
  const std::uint32_t rc = callTransport(transport_entry::kInitialize, initialize);
  if (rc != QRN_ERROR_SUCCESS) {
    const platform::ErrorCode reason = platform::lastError();
    throw Win32Exception("Unable to initialize DLL=", reason != platform::kSuccess ? reason : rc,
                         "TransportDllHandler", 32);
  }
}

void TransportDllHandler::onUnload(const TransportDll& dll) {
  if (void* const address = dll.findProcAddress(transport_entry::kUninitialize)) {
    // The module goes either way.
    transportResult(transport_entry::kUninitialize, [&] {
      reinterpret_cast<transport_entry::Uninitialize*>(address)();
      return QRN_ERROR_SUCCESS;
    });
  }
}

}  // namespace qvn
