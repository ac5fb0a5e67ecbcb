#include <map>
#include <mutex>

#include "common/clients/operation_lock.h"
#include "transport/basic_dll.h"

namespace qvn {
namespace {

std::mutex ownersMutex;

std::map<const void*, std::uint32_t>& owners() {
  static std::map<const void*, std::uint32_t> table;
  return table;
}

}  // namespace

OperationLock& ModuleOwners::lock() {
  static OperationLock lock(LockRank::Modules);
  return lock;
}

bool ModuleOwners::join(const void* moduleIdentity) {
  const std::lock_guard<std::mutex> lock(ownersMutex);
  const auto found = owners().find(moduleIdentity);
  if (found == owners().end()) return false;
  ++found->second;
  return true;
}

bool ModuleOwners::leave(const void* moduleIdentity) {
  const std::lock_guard<std::mutex> lock(ownersMutex);
  const auto found = owners().find(moduleIdentity);
  if (found == owners().end() || found->second == 1) return false;
  --found->second;
  return true;
}

void ModuleOwners::add(const void* moduleIdentity) {
  const std::lock_guard<std::mutex> lock(ownersMutex);
  ++owners()[moduleIdentity];
}

bool ModuleOwners::remove(const void* moduleIdentity) {
  const std::lock_guard<std::mutex> lock(ownersMutex);
  const auto found = owners().find(moduleIdentity);
  if (found == owners().end() || --found->second > 0) return false;
  owners().erase(found);
  return true;
}

}  // namespace qvn
