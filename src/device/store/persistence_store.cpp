#include "device/store/persistence_store.h"

#include "common/exception.h"
#include "common/settings/application_settings.h"
#include "common/settings/localize.h"
#include "common/text.h"
#include "common/threads/inter_process_lock.h"
#include "platform/registry/registry.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn {

namespace registry = platform::registry;

namespace {

constexpr char kMutexName[] = "persistenceStoreMutex";
constexpr std::uint32_t kLocal = SettingsStore::kLocal;

platform::ErrorCode openStore(const std::string& store, registry::Key& key) {
  return registry::openKey(registry::Hive::LocalMachine,
                           Localize::getInstance().getRegistryRoot(kLocal) + store, key);
}

// Walks the values of a store in the order of writing. The texts are lent for the call.
platform::ErrorCode forEachText(const std::string& store,
                                const std::function<void(registry::ValueType, std::string_view)>& reader) {
  registry::Key key;
  const platform::ErrorCode error = openStore(store, key);
  if (error != platform::kSuccess) return error;
  return registry::forEachValue(
      key, [&](std::string_view, registry::ValueType type, std::string_view text) { reader(type, text); });
}

// 0, or the thread's last error as the settings left it when they failed.
std::uint32_t resultOf(bool succeeded) { return succeeded ? QRN_ERROR_SUCCESS : platform::lastError(); }

}  // namespace

PersistenceStore::PersistenceStore() : mutex_(false, kMutexName, true) {}

std::uint32_t PersistenceStore::write(const std::string& store, std::uint32_t handle,
                                      const std::string& text) {
  InterProcessLock lock(mutex_);
  return resultOf(ApplicationSettings().setString(store, std::to_string(handle), text, kLocal));
}

std::uint32_t PersistenceStore::remove(const std::string& store, std::uint32_t handle) {
  InterProcessLock lock(mutex_);
  return resultOf(ApplicationSettings().deleteValue(store, std::to_string(handle), kLocal));
}

std::uint32_t PersistenceStore::read(const std::string& store, std::uint32_t handle, std::string& text) {
  InterProcessLock lock(mutex_);
  registry::Key key;
  bool found = false;
  platform::ErrorCode error = openStore(store, key);
  if (error == platform::kSuccess) {
    error = registry::readValue(key, std::to_string(handle),
                                [&](registry::ValueType type, std::string_view stored) {
                                  found = type == registry::ValueType::String;
                                  if (found) text = stored;
                                });
  }
  if (error != platform::kSuccess) platform::setLastError(error);
  return found ? QRN_ERROR_SUCCESS : QRN_ERROR_NOT_FOUND;
}

std::uint32_t PersistenceStore::findByPortname(const std::string& store, const std::string& portName,
                                               std::string& text) {
  InterProcessLock lock(mutex_);
  std::uint32_t rc = QRN_ERROR_UNKNOWN_PORT;
  std::string candidate;
  const platform::ErrorCode error =
      forEachText(store, [&](registry::ValueType type, std::string_view stored) {
        if (rc != QRN_ERROR_UNKNOWN_PORT) return;
        if (type != registry::ValueType::String) {
          rc = QRN_ERROR_INTERNAL_ERROR;
        } else if (AttributeCodec::getString(stored, attribute::kPortname, candidate) == QRN_ERROR_SUCCESS &&
                   equalsIgnoringCase(candidate, portName)) {
          text = stored;
          rc = QRN_ERROR_SUCCESS;
        }
      });
  if (error != platform::kSuccess) platform::setLastError(error);
  return rc;
}

void PersistenceStore::forEach(const std::string& store,
                               const std::function<void(std::string_view)>& reader) {
  InterProcessLock lock(mutex_);
  const platform::ErrorCode error =
      forEachText(store, [&](registry::ValueType type, std::string_view stored) {
        if (type == registry::ValueType::String) reader(stored);
      });
  if (error != platform::kSuccess) platform::setLastError(error);
}

}  // namespace qvn
