#include "discovery/device_handles.h"

#include "base/ip_settings.h"
#include "platform/base/error.h"
#include "platform/registry/registry.h"
#include "qvn/result_codes.h"
#include "qvn/transport/device_numbers.h"
#include "qvn/transport/settings.h"

namespace qvn::ipv4 {
namespace {

namespace registry = platform::registry;

platform::ErrorCode openServices(registry::Key& services) {
  return registry::openKey(registry::Hive::LocalMachine, kLibraryRegistryRoot + std::string(kServicesKey),
                           services);
}

}  // namespace

// Each changes a device's number and its service as one, whatever other processes find meanwhile.

std::uint32_t handleOf(const std::string& serial, std::uint32_t& handle) {
  return registry::transaction([&] {
    const std::uint32_t rc = deviceNumber(kDevicesKey, serial, kFirstHandle, handle);
    if (rc != QRN_ERROR_SUCCESS) return rc;
    registry::Key services;
    platform::ErrorCode forgotten = openServices(services);
    if (forgotten == platform::kSuccess) forgotten = registry::deleteValue(services, serial);
    return forgotten == platform::kFileNotFound ? platform::kSuccess : forgotten;
  });
}

std::uint32_t handleOfService(const std::string& serial, const std::string& serviceName,
                              std::uint32_t& handle) {
  return registry::transaction([&]() -> std::uint32_t {
    const std::string announced = serviceNameOf(serial);
    bool isNew = false;
    const std::uint32_t rc = deviceNumber(kDevicesKey, serial, kFirstHandle, handle, &isNew);
    if (rc != QRN_ERROR_SUCCESS || announced == serviceName) return rc;
    if (!isNew && announced.empty()) return QRN_ERROR_NOT_FOUND;
    return setTransportTextSetting(kServicesKey, serial.c_str(), serviceName);
  });
}

std::string serviceNameOf(const std::string& serial) {
  registry::Key services;
  registry::Value name;
  if (openServices(services) != platform::kSuccess ||
      registry::getValue(services, serial, name) != platform::kSuccess ||
      name.type != registry::ValueType::String) {
    return {};
  }
  return name.data;
}

}  // namespace qvn::ipv4
