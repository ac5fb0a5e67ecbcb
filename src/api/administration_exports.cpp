// The exported functions for installers and configuration tools.
#include "api/exported_call.h"
#include "api/initialization.h"
#include "api/system.h"
#include "platform/base/error.h"
#include "qvn/qvn.h"

using namespace qvn;

namespace {

LogText plainEntry(const char* function) { return LogText() << function << "()"; }

}  // namespace

// These two work without the library being initialised. When it is, the pass keeps it so until they are done.
uint32_t QvnInstall(void) {
  return guardedCall([] {
    std::uint32_t rc = QRN_ERROR_SUCCESS;
    {
      const Initialization::Hold hold;
      rc = System::qvnInstall();
    }
    // The installation goes on without it, and so has no result to tell it by.
    platform::setLastError(rc);
    return QRN_ERROR_SUCCESS;
  });
}

uint32_t QvnUninstall(void) {
  return guardedCall([] {
    const Initialization::Hold hold;
    System::qvnUninstall();
    return QRN_ERROR_SUCCESS;
  });
}

uint32_t QvnAddMonitor(void) {
  return tracedCall([] { return plainEntry("QvnAddMonitor"); },
                    [](ExitDetail&) { return System::qvnAddMonitor(); });
}

uint32_t QvnAddTransport(const char* moduleFileName) {
  return tracedCall([] { return plainEntry("QvnAddTransport"); },
                    [&](ExitDetail& exit) -> std::uint32_t {
                      if (moduleFileName == nullptr) return QRN_ERROR_INVALID_PARAMETER;
                      const std::uint32_t rc = System::qvnAddTransport(moduleFileName);
                      exit.set([&] { return LogText() << " transport=" << moduleFileName; });
                      return rc;
                    });
}

uint32_t QvnRemoveTransport(const char* name) {
  return tracedCall([] { return plainEntry("QvnRemoveTransport"); },
                    [&](ExitDetail& exit) -> std::uint32_t {
                      if (name == nullptr) return QRN_ERROR_INVALID_PARAMETER;
                      const std::uint32_t rc = System::qvnRemoveTransport(name);
                      exit.set([&] { return LogText() << " transport=" << name; });
                      return rc;
                    });
}

uint32_t QvnSuspend(void) {
  return tracedCall([] { return plainEntry("QvnSuspend"); },
                    [](ExitDetail&) { return System::qvnSuspend(); });
}

uint32_t QvnResume(void) {
  return tracedCall([] { return plainEntry("QvnResume"); }, [](ExitDetail&) { return System::qvnResume(); });
}

uint32_t QvnGetHostInfo(uint32_t clientId, const char* key, char* buffer, uint32_t bufferSize,
                        uint32_t* required) {
  return tracedCall([=] { return entryText("QvnGetHostInfo", clientId); },
                    [&](ExitDetail&) -> std::uint32_t {
                      if (key == nullptr || buffer == nullptr || bufferSize == 0 || required == nullptr) {
                        return QRN_ERROR_INVALID_PARAMETER;
                      }
                      *required = 0;
                      buffer[0] = '\0';
                      return System::qvnGetHostInfo(key, buffer, bufferSize, *required);
                    });
}

uint32_t QvnSetHostInfo(uint32_t clientId, const char* key, const char* value, uint32_t valueLength) {
  return tracedCall([=] { return entryText("QvnSetHostInfo", clientId); },
                    [&](ExitDetail&) -> std::uint32_t {
                      if (key == nullptr || value == nullptr || valueLength == 0) {
                        return QRN_ERROR_INVALID_PARAMETER;
                      }
                      return System::qvnSetHostInfo(key, value);
                    });
}
