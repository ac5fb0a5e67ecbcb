#include "qvn/transport/device.h"

#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/critical_section.h"

namespace qvn {
namespace {

// 87 with a line in the log when the attribute may only be read.
std::uint32_t refuseReadOnly(const char* operation, const std::string& descriptor) {
  if (AttributeCodec::isWriteable(descriptor)) return QRN_ERROR_SUCCESS;
  logError(log_component::server(),
           [&] { return LogText() << operation << " Attempt to set a ReadOnly key=" << descriptor; });
  return QRN_ERROR_INVALID_PARAMETER;
}

std::uint32_t refuseUnsupported(const char* operation, const std::string& descriptor) {
  logError(log_component::server(),
           [&] { return LogText() << operation << " called!!!, key: " << descriptor; });
  return QRN_ERROR_INTERNAL_ERROR;
}

}  // namespace

Device::~Device() = default;

std::uint32_t Device::getHandle() {
  if (cachedHandle_ == 0) {
    std::uint32_t handle = 0;
    if (AttributeCodec::getLong(getAttributes(), attribute::kHandle, handle) == QRN_ERROR_SUCCESS) {
      cachedHandle_ = handle;
    }
  }
  return cachedHandle_;
}

std::string Device::getAttributes() {
  CriticalSectionLock lock(lock_);
  return attributes_;
}

void Device::setAttributes(const std::string& attributes) {
  CriticalSectionLock lock(lock_);
  attributes_ = attributes;
  cachedHandle_ = 0;
}

void Device::accept(Visitor& visitor) { visitor.setDevice(*this); }

std::uint32_t Device::setByteArray(const std::string& descriptor, const std::uint8_t* bytes,
                                   std::uint32_t length) {
  const std::uint32_t rc = refuseReadOnly("Device::setByteArray()", descriptor);
  return rc != QRN_ERROR_SUCCESS ? rc : doSetByteArray(descriptor, bytes, length);
}

std::uint32_t Device::setLong(const std::string& descriptor, std::uint32_t value) {
  const std::uint32_t rc = refuseReadOnly("Device::setLong()", descriptor);
  return rc != QRN_ERROR_SUCCESS ? rc : doSetLong(descriptor, value);
}

std::uint32_t Device::setString(const std::string& descriptor, const std::string& value) {
  const std::uint32_t rc = refuseReadOnly("Device::setString()", descriptor);
  return rc != QRN_ERROR_SUCCESS ? rc : doSetString(descriptor, value);
}

std::uint32_t Device::doSetByteArray(const std::string& descriptor, const std::uint8_t* /*bytes*/,
                                     std::uint32_t /*length*/) {
  return refuseUnsupported("Device::doSetByteArray", descriptor);
}

std::uint32_t Device::doSetLong(const std::string& descriptor, std::uint32_t /*value*/) {
  return refuseUnsupported("Device::doSetLong", descriptor);
}

std::uint32_t Device::doSetString(const std::string& descriptor, const std::string& /*value*/) {
  return refuseUnsupported("Device::doSetString", descriptor);
}

void Device::doAccept(Data& data) { notify(data); }
std::uint32_t Device::doAccept(Notification& /*notification*/) { return QRN_ERROR_INVALID_FUNCTION; }
std::uint32_t Device::doOnConnectionLost() { return QRN_ERROR_INVALID_FUNCTION; }

void Device::doPersist() {
  logError(log_component::server(), [] { return LogText() << "Device::doPersist() called!!!"; });
}

void Device::doUpdate() {
  logError(log_component::server(), [] { return LogText() << "Device::doUpdate() called!!!"; });
}

}  // namespace qvn
