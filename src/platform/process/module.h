// Loadable modules (transport plug-ins) and the module that a piece of code belongs to.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "platform/base/error.h"

namespace qvn::platform {

class QVN_PLATFORM_API Module {
 public:
  // Loads the module. A bare file name is searched in each directory of QVN_TRANSPORT_PATH (separated by
  // colons), then in "transports" of installedDirectory(), then as the system does; a name with a
  // slash is used as it is. Null on failure, with `error` set: 126 not found, 193 not a module or one whose
  // own needs are missing, 5 when the file or its directory could be changed by others than root and the
  // current user (whoever can write a plug-in owns every process that prints). `detail`, if given, receives a
  // sentence on the failure.
  static std::unique_ptr<Module> load(const std::string& name, ErrorCode& error,
                                      std::string* detail = nullptr);

  // Unloads the module when its last owner in the process lets go.
  virtual ~Module();

  // The address of an exported function; null with `error` 127 when there is none.
  virtual void* find(const char* symbol, ErrorCode& error) const = 0;

  // Two loads of one file give the same identity.
  virtual const void* identity() const = 0;
};

// The path of the module that contains `address`; empty when none does.
QVN_PLATFORM_API std::string modulePath(const void* address);

// The directory of the programs, files and transports that are installed with this layer: "qvn" beside its
// shared library.
QVN_PLATFORM_API std::filesystem::path installedDirectory();

}  // namespace qvn::platform
