// BasicDll: one loaded module, shared by all its owners in the process.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "common/clients/operation_lock.h"
#include "common/exception.h"
#include "platform/process/module.h"

namespace qvn {

inline constexpr char kBasicDllFile[] = "../../export\\common/basicdll";

// Counts the owners of every module in the process.
class ModuleOwners {
 public:
  // Held from the first owner's loading until it is one, and while the last one unloads: that takes as long
  // as the module's threads need.
  static OperationLock& lock();

  // For all others, who need not wait for that: one owner more, if there is one, and one less, unless it is
  // the last.
  static bool join(const void* moduleIdentity);
  static bool leave(const void* moduleIdentity);

  // With the lock held. Whether it was the last one.
  static void add(const void* moduleIdentity);
  static bool remove(const void* moduleIdentity);
};

// Why a module was not loaded: the code, and what the system says of it.
class ModuleNotLoaded : public Win32Exception {
 public:
  ModuleNotLoaded(const std::string& message, std::uint32_t code, std::string detail)
      : Win32Exception(message, code, kBasicDllFile, 296), detail_(std::move(detail)) {}
  const std::string& getDetail() const { return detail_; }

 private:
  std::string detail_;
};

// The handler's onLoad runs when the first owner loads the module, its onUnload before the last one lets go.
template <typename Handler>
class BasicDll {
 public:
  BasicDll() = default;
  explicit BasicDll(const std::string& moduleName) { init(moduleName); }
  BasicDll(const BasicDll&) = delete;
  BasicDll& operator=(const BasicDll&) = delete;
  ~BasicDll();

  // Throws ModuleNotLoaded when the module cannot be loaded, and Win32Exception when its handler refuses it.
  void init(const std::string& moduleName);

  // Throws Win32Exception when the module does not export it.
  void* getProcAddress(const char* entryPoint) const;
  // Null when the module does not export it.
  void* findProcAddress(const char* entryPoint) const;

  template <typename Function>
  Function* entry(const char* entryPoint) const {
    return reinterpret_cast<Function*>(getProcAddress(entryPoint));
  }

  const std::string& getName() const { return name_; }

 private:
  std::string name_;
  std::unique_ptr<platform::Module> module_;
  Handler handler_;
};

template <typename Handler>
void BasicDll<Handler>::init(const std::string& moduleName) {
  name_ = moduleName;
  platform::ErrorCode error = platform::kSuccess;
  std::string detail;
  module_ = platform::Module::load(moduleName, error, &detail);
  if (!module_) {
    throw ModuleNotLoaded("BasicDll<Handler>::init() Unable to load DLL=" + moduleName, error,
                          std::move(detail));
  }
  try {
    if (ModuleOwners::join(module_->identity())) return;
    const OperationLock::Turn turn(ModuleOwners::lock(), OperationLock::Nested::Allowed);
    if (ModuleOwners::join(module_->identity())) return;
    handler_.onLoad(*this);
    ModuleOwners::add(module_->identity());
  } catch (...) {
    module_.reset();
    throw;
  }
}

template <typename Handler>
BasicDll<Handler>::~BasicDll() {
  if (!module_ || ModuleOwners::leave(module_->identity())) return;
  const OperationLock::Turn turn(ModuleOwners::lock(), OperationLock::Nested::Allowed);
  if (ModuleOwners::remove(module_->identity())) handler_.onUnload(*this);
  module_.reset();
}

template <typename Handler>
void* BasicDll<Handler>::findProcAddress(const char* entryPoint) const {
  platform::ErrorCode error = platform::kSuccess;
  return module_->find(entryPoint, error);
}

template <typename Handler>
void* BasicDll<Handler>::getProcAddress(const char* entryPoint) const {
  platform::ErrorCode error = platform::kSuccess;
  void* const address = module_->find(entryPoint, error);
  if (address == nullptr) {
    throw Win32Exception("BasicDll<Handler>::getProcAddress() Unable to get proc address=", error,
                         kBasicDllFile, 83);
  }
  return address;
}

}  // namespace qvn
