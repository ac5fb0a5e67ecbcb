#include "device/store/persistence_store.h"

#include "common/exception.h"
#include "common/text.h"
#include "common/threads/inter_process_lock.h"
#include "platform/base/error.h"
#include "platform/registry/registry.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn {
namespace {

using platform::registry::ValueType;

constexpr char kMutexName[] = "persistenceStoreMutex";
constexpr std::uint32_t kLocal = SettingsStore::kLocal;

// 0, or the thread's last error as the settings left it when they failed.
std::uint32_t resultOf(bool succeeded) { return succeeded ? QRN_ERROR_SUCCESS : platform::lastError(); }

}  // namespace

PersistenceStore::PersistenceStore() : mutex_(false, kMutexName, true) {}

std::uint32_t PersistenceStore::write(const std::string& store, std::uint32_t handle,
                                      const std::string& text) {
  InterProcessLock lock(mutex_);
  return resultOf(settings_.setString(store, std::to_string(handle), text, kLocal));
}

std::uint32_t PersistenceStore::update(const std::string& store, std::uint32_t handle,
                                       const std::function<std::string(const std::string& stored)>& change) {
  InterProcessLock lock(mutex_);
  const std::string name = std::to_string(handle);
  std::string text;
  settings_.getString(store, name, text, kLocal);
  return resultOf(settings_.setString(store, name, change(text), kLocal));
}

std::uint32_t PersistenceStore::remove(const std::string& store, std::uint32_t handle) {
  InterProcessLock lock(mutex_);
  return resultOf(settings_.deleteValue(store, std::to_string(handle), kLocal));
}

std::uint32_t PersistenceStore::read(const std::string& store, std::uint32_t handle, std::string& text) {
  InterProcessLock lock(mutex_);
  const bool found = settings_.getString(store, std::to_string(handle), text, kLocal);
  return found ? QRN_ERROR_SUCCESS : QRN_ERROR_NOT_FOUND;
}

std::uint32_t PersistenceStore::findByPortname(const std::string& store, const std::string& portName,
                                               std::string& text) {
  InterProcessLock lock(mutex_);
  std::uint32_t rc = QRN_ERROR_UNKNOWN_PORT;
  std::string candidate;
  const auto compare = [&](std::string_view, ValueType type, std::string_view stored) {
    if (rc != QRN_ERROR_UNKNOWN_PORT) return;
    if (type != ValueType::String) {
      rc = QRN_ERROR_INTERNAL_ERROR;
    } else if (AttributeCodec::getString(stored, attribute::kPortname, candidate) == QRN_ERROR_SUCCESS &&
               equalsIgnoringCase(candidate, portName)) {
      text = stored;
      rc = QRN_ERROR_SUCCESS;
    }
  };
  settings_.forEachValue(store, compare, kLocal);
  return rc;
}

std::uint32_t PersistenceStore::enumerate(const std::string& store, std::vector<std::string>& texts) {
  texts.clear();
  forEach(store, [&](std::string_view text) { texts.emplace_back(text); });
  return QRN_ERROR_SUCCESS;
}

void PersistenceStore::forEach(const std::string& store,
                               const std::function<void(std::string_view)>& reader) {
  InterProcessLock lock(mutex_);
  const auto readText = [&](std::string_view, ValueType type, std::string_view stored) {
    if (type == ValueType::String) reader(stored);
  };
  settings_.forEachValue(store, readText, kLocal);
}

}  // namespace qvn
