// The exported functions of the library itself and of its clients.
#include "api/exported_call.h"
#include "api/initialization.h"
#include "api/system.h"
#include "qvn/qvn.h"

using namespace qvn;

uint32_t QvnInitialize(void) {
  return guardedCall([] { return Initialization::initialize(); });
}

uint32_t QvnUninitialize(void) {
  return guardedCall([] { return Initialization::uninitialize(); });
}

uint32_t QvnGetClientId(uint32_t* clientId) {
  if (clientId == nullptr) {
    // Works without the library being initialised, which then has no log.
    untracedCall([] {
      logDetail(log_component::server(), [] { return LogText() << "QvnGetClientId() bad parameter"; });
      return QRN_ERROR_SUCCESS;
    });
    return QRN_ERROR_INVALID_PARAMETER;
  }
  return System::qvnGetClientId(*clientId);
}

uint32_t QvnSetClientInfo(uint32_t clientId, const char* key, const char* value) {
  return tracedCall([=] { return entryText("QvnSetClientInfo", clientId); },
                    [&](ExitDetail& exit) -> std::uint32_t {
                      if (key == nullptr || value == nullptr) return QRN_ERROR_INVALID_PARAMETER;
                      exit.set([&] { return LogText() << " key=" << key << " value=" << value; });
                      return System::qvnSetClientInfo();
                    });
}
