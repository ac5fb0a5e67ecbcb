#include "platform/process/cups_library.h"
#include "platform/base/error.h"

#include <mutex>

namespace qvn::platform {
namespace {

constexpr char kFileName[] = "libcups.so.2";

}  // namespace

const CupsLibrary* CupsLibrary::get() {
  static std::mutex mutex;
  // Never unloaded: it keeps data per thread, which it frees when a thread ends.
  static CupsLibrary* library = nullptr;
  const std::lock_guard guard(mutex);
  if (library == nullptr) {
    auto loaded = std::make_unique<CupsLibrary>();
    if (loaded->load()) library = loaded.release();
  }
  return library;
}

bool CupsLibrary::load() {
  ErrorCode error = kSuccess;
  module_ = Module::load(kFileName, error);
  return module_ != nullptr && find("cupsServer", cupsServer) && find("ippPort", ippPort) &&
         find("cupsEncryption", cupsEncryption) && find("cupsSetPasswordCB2", cupsSetPasswordCB2) &&
         find("httpConnect2", httpConnect2) && find("httpSetTimeout", httpSetTimeout) &&
         find("httpClose", httpClose) && find("cupsDoRequest", cupsDoRequest) &&
         find("ippNewRequest", ippNewRequest) && find("ippAddInteger", ippAddInteger) &&
         find("ippAddStrings", ippAddStrings) && find("ippGetStatusCode", ippGetStatusCode) &&
         find("ippFirstAttribute", ippFirstAttribute) && find("ippNextAttribute", ippNextAttribute) &&
         find("ippGetGroupTag", ippGetGroupTag) && find("ippGetName", ippGetName) &&
         find("ippGetString", ippGetString) && find("ippDelete", ippDelete);
}

template <typename Function>
bool CupsLibrary::find(const char* symbol, Function& function) const {
  ErrorCode error = kSuccess;
  function = reinterpret_cast<Function>(module_->find(symbol, error));
  return function != nullptr;
}

}  // namespace qvn::platform
