// TransportDll: a loaded transport module, initialised when it is loaded and uninitialised before it goes.
#pragma once

#include "common/exception.h"
#include "qvn/result_codes.h"
#include "qvn/transport/plugin.h"
#include "transport/basic_dll.h"

namespace qvn {

class TransportDllHandler;
using TransportDll = BasicDll<TransportDllHandler>;

class TransportDllHandler {
 public:
  // Throws Win32Exception when the module was built against another version of the interface, lacks its entry
  // point or does not initialise.
  void onLoad(const TransportDll& dll);
  void onUnload(const TransportDll& dll);
};

// Calls into a transport module; what is thrown there and is not the library's own becomes a Win32Exception
// with code 1359.
template <typename Call>
auto callTransport(const char* what, Call&& call) {
  try {
    return call();
  } catch (const Win32Exception&) {
    throw;
  } catch (...) {
    throw Win32Exception(std::string(what) + " threw", QRN_ERROR_INTERNAL_ERROR, "", 0);
  }
}

}  // namespace qvn
