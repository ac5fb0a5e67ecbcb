#include "shared/client/devices.h"

#include <nlohmann/json.hpp>

#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "shared/client/attribute_table.h"
#include "shared/client/failure.h"
#include "shared/client/read_whole.h"
#include "shared/client/text_values.h"

namespace qvn::cli {

namespace {

constexpr DeviceKind kKinds[] = {
    {"printer", "PrinterStore", QvnOpenPrinter, QvnEnumPrinters, QvnGetStringPrinter, QvnGetLongPrinter,
     QvnGetByteArrayPrinter, QvnDeletePrinter, QvnEnumSpecificPrinter},
    {"scanner", "ScannerStore", QvnOpenScanner, QvnEnumScanners, QvnGetStringScanner, QvnGetLongScanner,
     nullptr, QvnDeleteScanner, QvnEnumSpecificScanner},
    {"hid", "HidStore", QvnOpenHid, QvnEnumHids, QvnGetStringHid, QvnGetLongHid, nullptr, QvnDeleteHid,
     QvnEnumSpecificHid},
};

constexpr DeviceFamily kFamilies[] = {
    {"CpdPrinter", "printer"}, {"BpdPrinter", "printer"}, {"CpdScanner", "scanner"},
    {"BpdScanner", "scanner"}, {"CpdHid", "hid"},
};

// The enumeration callback has no argument of its own to carry these.
std::vector<std::uint32_t>* foundHandles = nullptr;

void onDeviceFound(std::uint32_t, std::uint32_t handle) { foundHandles->push_back(handle); }

}  // namespace

std::span<const DeviceKind> deviceKinds() { return kKinds; }

const DeviceKind& kindNamed(const std::string& name) {
  for (const DeviceKind& kind : kKinds) {
    if (name == kind.name) {
      return kind;
    }
  }
  throw UsageError("'" + name + "' is no kind of device: use printer, scanner or hid");
}

std::span<const DeviceFamily> deviceFamilies() { return kFamilies; }

std::string Device::text() const { return std::string(kind->name) + " " + std::to_string(handle); }

std::vector<Device> listDevices(const Session& session, const DeviceKind& kind, const std::string& transport,
                                const std::string& filter) {
  std::vector<std::uint32_t> handles;
  foundHandles = &handles;
  const std::uint32_t result =
      kind.enumerate(session.client(), transport.c_str(), filter.c_str(), onDeviceFound);
  foundHandles = nullptr;
  require(result, "cannot list the stored devices");
  std::vector<Device> devices;
  devices.reserve(handles.size());
  for (const std::uint32_t handle : handles) {
    devices.push_back({&kind, handle});
  }
  return devices;
}

std::optional<Json> readAttribute(const Session& session, const Device& device,
                                  const std::string& descriptor) {
  const DeviceKind* const kind = device.kind;
  const std::uint32_t handle = device.handle;
  const char* key = descriptor.c_str();
  std::uint32_t result = QRN_ERROR_NOT_FOUND;
  Json value;
  if (AttributeCodec::isString(descriptor)) {
    std::vector<char> text;
    result = readWhole(
        [&](char* buffer, std::uint32_t size, std::uint32_t* required) {
          return kind->getString(session.client(), handle, key, buffer, size, required);
        },
        text);
    if (!text.empty()) {
      value = std::string(text.data());
    }
  } else if (AttributeCodec::isLong(descriptor)) {
    std::uint32_t number = 0;
    result = kind->getLong(session.client(), handle, key, &number);
    value = number;
  } else if (AttributeCodec::isByteArray(descriptor)) {
    if (kind->getByteArray == nullptr) {
      return std::nullopt;
    }
    std::vector<std::uint8_t> bytes;
    result = readWhole(
        [&](std::uint8_t* buffer, std::uint32_t size, std::uint32_t* required) {
          return kind->getByteArray(session.client(), handle, key, buffer, size, required);
        },
        bytes);
    value = formatHex(std::string(bytes.begin(), bytes.end()));
  } else {
    throw UsageError("'" + descriptor + "' is no attribute descriptor");
  }
  if (result == QRN_ERROR_NOT_FOUND) {
    return std::nullopt;
  }
  require(result, "cannot read " + attributeName(descriptor) + " of " + device.text());
  return value;
}

std::string readText(const Session& session, const Device& device, const std::string& descriptor) {
  const auto value = readAttribute(session, device, descriptor);
  return value ? cell(*value) : "";
}

std::uint32_t readNumber(const Session& session, const Device& device, const std::string& descriptor) {
  const auto value = readAttribute(session, device, descriptor);
  return value && value->is_number() ? value->get<std::uint32_t>() : 0;
}

bool isStored(const Session& session, const Device& device) {
  return readAttribute(session, device, attribute::kHandle).has_value();
}

Device selectNamed(const Session& session, const DeviceKind& kind, const std::string& name) {
  const std::string word = kind.name;
  if (name.empty()) {
    const auto stored = listDevices(session, kind, "ALL_TRANSPORT");
    if (stored.size() == 1) {
      return stored.front();
    }
    if (stored.empty()) {
      throw Failure("no " + word +
                    " of a registered transport is stored: see 'qvn transport add' and 'qvn discover'");
    }
    throw UsageError("several " + word + "s are stored: name one with --device (see 'qvn device list')");
  }
  if (const auto handle = parseNumber(name)) {
    const Device device{&kind, *handle};
    if (!isStored(session, device)) {
      throw Failure("there is no " + device.text(), QRN_ERROR_INVALID_HANDLE);
    }
    return device;
  }
  std::uint32_t handle = 0;
  require(kind.findByPortname(session.client(), name.c_str(), &handle),
          "there is no " + word + " with the port name '" + name + "'");
  return {&kind, handle};
}

Device selectPrinter(const Session& session, const std::string& name) {
  return selectNamed(session, kKinds[0], name);
}

Device selectAny(const Session& session, const std::string& name, const std::string& kindName) {
  if (name.empty() || !kindName.empty()) {
    return selectNamed(session, kindName.empty() ? kKinds[0] : kindNamed(kindName), name);
  }
  std::vector<Device> matches;
  const auto handle = parseNumber(name);
  for (const DeviceKind& kind : kKinds) {
    Device device{&kind, handle.value_or(0)};
    const bool found =
        handle ? isStored(session, device)
               : kind.findByPortname(session.client(), name.c_str(), &device.handle) == QRN_ERROR_SUCCESS;
    if (found) matches.push_back(device);
  }
  if (matches.empty() && handle) throw Failure("there is no device " + name, QRN_ERROR_INVALID_HANDLE);
  if (matches.empty()) {
    throw Failure("there is no device with the port name '" + name + "'", QRN_ERROR_UNKNOWN_PORT);
  }
  if (matches.size() > 1 && handle) {
    throw UsageError("several kinds of device have the handle " + name + ": say which with --kind");
  }
  // The parts of one device share its port name; the printer stands for them.
  return matches.front();
}

std::string placeOf(const Session& session, const Device& device, DevicePort port) {
  const std::string address = readText(session, device, attribute::kAddress);
  if (address.empty()) return readText(session, device, attribute::kTransport);
  std::uint32_t at = port == DevicePort::Channel ? readNumber(session, device, attribute::kChannelId) : 0;
  if (at == 0) at = readNumber(session, device, attribute::kIpPort);
  return at == 0 ? address : address + " port " + std::to_string(at);
}

void requireOf(const Session& session, const Device& device, std::uint32_t code, const std::string& sentence,
               DevicePort port) {
  if (code != QRN_ERROR_SUCCESS) throw Failure(sentence, code, placeOf(session, device, port));
}

void openDevice(const Session& session, const Device& device) {
  requireOf(session, device, device.kind->open(session.client(), device.handle),
            "cannot open " + device.text());
}

Json describeDevice(const Session& session, const Device& device) {
  const auto read = [&](const char* descriptor) {
    const auto value = readAttribute(session, device, descriptor);
    return value ? *value : Json();
  };
  return {{"kind", device.kind->name},
          {"handle", device.handle},
          {"family", read(attribute::kDevice)},
          {"transport", read(attribute::kTransport)},
          {"portname", read(attribute::kPortname)},
          {"address", read(attribute::kAddress)}};
}

void printDevices(const Json& devices, bool json) {
  printListing(devices, {"kind", "handle", "family", "transport", "portname", "address"}, json);
}

}  // namespace qvn::cli
