#include "device/store/device_store.h"

#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "device/store/persistence_store.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn {

void storeReported(const std::string& text, const std::function<std::uint32_t()>& store) {
  const std::uint32_t rc = resultOf(store);
  if (rc == QRN_ERROR_SUCCESS) return;
  logError(log_component::server(),
           [&] { return LogText() << "Unable to store device: " << text << " rc=" << rc; });
}

std::uint32_t DeviceStore::persist(const std::string& text) {
  std::uint32_t handle = 0;
  const std::uint32_t rc = AttributeCodec::getLong(text, attribute::kHandle, handle);
  return rc != QRN_ERROR_SUCCESS ? rc : PersistenceStore::getInstance().write(name_, handle, text);
}

std::uint32_t DeviceStore::read(std::uint32_t handle, std::string& text) {
  return PersistenceStore::getInstance().read(name_, handle, text);
}

std::uint32_t DeviceStore::remove(std::uint32_t handle) {
  return PersistenceStore::getInstance().remove(name_, handle);
}

std::uint32_t DeviceStore::findByPortname(const std::string& portName, std::string& text) {
  return PersistenceStore::getInstance().findByPortname(name_, portName, text);
}

std::uint32_t DeviceStore::enumerate(std::vector<std::string>& texts) {
  return PersistenceStore::getInstance().enumerate(name_, texts);
}

void DeviceStore::forEach(const std::function<void(std::string_view)>& reader) {
  PersistenceStore::getInstance().forEach(name_, reader);
}

}  // namespace qvn
