// The stored devices of the three kinds, read through the exported functions.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "qvn/qvn.h"
#include "shared/client/output.h"
#include "shared/client/session.h"

namespace qvn::cli {

// The functions of one kind of device.
struct DeviceKind {
  const char* name;   // as on the command line
  const char* store;  // its key in the registry
  decltype(&QvnOpenPrinter) open;
  decltype(&QvnEnumPrinters) enumerate;
  decltype(&QvnGetStringPrinter) getString;
  decltype(&QvnGetLongPrinter) getLong;
  decltype(&QvnGetByteArrayPrinter) getByteArray;  // null where the kind has none
  decltype(&QvnDeletePrinter) remove;
  decltype(&QvnEnumSpecificPrinter) findByPortname;
};

std::span<const DeviceKind> deviceKinds();
// Throws UsageError for a name that is no kind.
const DeviceKind& kindNamed(const std::string& name);

// The families of device drivers and their kind of device.
struct DeviceFamily {
  const char* name;
  const char* kind;
};
std::span<const DeviceFamily> deviceFamilies();

struct Device {
  const DeviceKind* kind;
  std::uint32_t handle;

  // "printer 7"
  std::string text() const;
};

// The stored devices of one kind whose transport is the one named, or is of the kind named. The filter is an
// attribute text; printers that differ from it in Address, Portname or PortType are left out.
std::vector<Device> listDevices(const Session& session, const DeviceKind& kind, const std::string& transport,
                                const std::string& filter = "");

// The attribute's value: a text, a number, or bytes as hexadecimal digits. None when the device does not
// carry it, or its kind cannot read an attribute of that type. Throws Failure when reading fails.
std::optional<Json> readAttribute(const Session& session, const Device& device,
                                  const std::string& descriptor);

// The same for a text; empty when there is none.
std::string readText(const Session& session, const Device& device, const std::string& descriptor);
// The same for a number; 0 when there is none.
std::uint32_t readNumber(const Session& session, const Device& device, const std::string& descriptor);

// True when the store of its kind holds the device.
bool isStored(const Session& session, const Device& device);

// The device of that kind that a person names by its handle or its port name; without a name the only one
// stored.
Device selectNamed(const Session& session, const DeviceKind& kind, const std::string& name);
Device selectPrinter(const Session& session, const std::string& name);

// The same among all kinds, or that of the name; without a device's name only a printer is meant. Of several
// with one name the kind must be said.
Device selectAny(const Session& session, const std::string& name, const std::string& kindName);

// Where its transport finds the device: "192.0.2.17 port 9100", or its transport's name.
enum class DevicePort { Channel, Print };
std::string placeOf(const Session& session, const Device& device, DevicePort port = DevicePort::Channel);

// Throws Failure with the sentence, and what the code says of this device, unless the code is 0.
void requireOf(const Session& session, const Device& device, std::uint32_t code, const std::string& sentence,
               DevicePort port = DevicePort::Channel);

// Opens the device for the session's client. Throws Failure.
void openDevice(const Session& session, const Device& device);

// One line of a listing, with kind, handle, family, transport, portname and address.
Json describeDevice(const Session& session, const Device& device);
// Prints such lines.
void printDevices(const Json& devices, bool json);

}  // namespace qvn::cli
