// TransportDll: a loaded transport module, initialised when it is loaded and uninitialised before it goes.
#pragma once

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

}  // namespace qvn
