#include "device/store/printer_store.h"

#include "device/factories/device_factories.h"
#include "device/factories/factory.h"
#include "device/store/persistence_store.h"
#include "device/store/printer_table.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn {
namespace {

std::string merge(const std::string& reported, const std::string& stored) {
  std::string merged = reported;
  std::string portName;
  if (AttributeCodec::getString(stored, attribute::kPortname, portName) == QRN_ERROR_SUCCESS &&
      !portName.empty()) {
    AttributeCodec::setString(merged, attribute::kPortname, portName);
  }
  std::uint32_t trueEndOfJob = 0;
  if (AttributeCodec::getLong(stored, attribute::kTrueEndOfJob, trueEndOfJob) == QRN_ERROR_SUCCESS &&
      trueEndOfJob > 0) {
    AttributeCodec::setLong(merged, attribute::kTrueEndOfJob, trueEndOfJob);
  }
  return merged;
}

}  // namespace

std::uint32_t PrinterStore::update(const std::string& text) {
  std::uint32_t handle = 0;
  const std::uint32_t rc = AttributeCodec::getLong(text, attribute::kHandle, handle);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  return PersistenceStore::getInstance().update(
      name(), handle, [&](const std::string& stored) { return merge(text, stored); });
}

std::uint32_t PrinterStore::restore(std::uint32_t handle) {
  return restoreInto(PrinterTable::getInstance(), handle, [](const std::string& text) {
    return DeviceFactories::getInstance().makePrinter(text);
  });
}

}  // namespace qvn
