#include <map>

#include "common/clients/operation_lock.h"
#include "transport/basic_dll.h"

namespace qvn {
namespace {

std::map<const void*, std::uint32_t>& owners() {
  static std::map<const void*, std::uint32_t> table;
  return table;
}

}  // namespace

OperationLock& ModuleOwners::lock() {
  static OperationLock lock(LockRank::Modules);
  return lock;
}

std::uint32_t ModuleOwners::add(const void* moduleIdentity) { return ++owners()[moduleIdentity]; }

std::uint32_t ModuleOwners::remove(const void* moduleIdentity) {
  const auto found = owners().find(moduleIdentity);
  if (found == owners().end()) return 0;
  const std::uint32_t remaining = --found->second;
  if (remaining == 0) owners().erase(found);
  return remaining;
}

std::uint32_t ModuleOwners::count(const void* moduleIdentity) {
  const auto found = owners().find(moduleIdentity);
  return found == owners().end() ? 0 : found->second;
}

}  // namespace qvn
