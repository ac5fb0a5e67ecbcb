// qvn device: the stored devices.
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "library_settings.h"
#include "platform/threads/mutex.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "shared/client/attribute_table.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/client/text_values.h"
#include "verbs/commands.h"
#include "verbs/quiet.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

struct ListOptions {
  std::string kind;
  std::string transport = "ALL_TRANSPORT";
  bool json = false;
  std::string address;
  std::string portname;
  std::string portType;
};

struct NamedDevice {
  std::string device;
  std::string kind;
  bool json = false;
  bool quiet = false;
};

struct AddOptions {
  std::string family;
  std::string transport;
  std::uint32_t handle = 0;
  std::string address;
  std::string portname;
  std::string portType;
  std::vector<std::string> attributes;  // NAME=VALUE
  bool quiet = false;
};

// Puts one value into an attribute text, read as the attribute's type says.
void setAttribute(std::string& text, const std::string& descriptor, const std::string& value) {
  const std::string name = attributeName(descriptor);
  if (AttributeCodec::isLong(descriptor)) {
    const auto number = parseNumber(value);
    if (!number) {
      throw UsageError(name + " is a number, '" + value + "' is none");
    }
    AttributeCodec::setLong(text, descriptor, *number);
  } else if (AttributeCodec::isByteArray(descriptor)) {
    const auto bytes = parseHex(value);
    if (!bytes) {
      throw UsageError(name + " is bytes in hexadecimal, '" + value + "' is not");
    }
    AttributeCodec::setByteArray(text, descriptor, reinterpret_cast<const std::uint8_t*>(bytes->data()),
                                 static_cast<std::uint32_t>(bytes->size()));
  } else if (AttributeCodec::setString(text, descriptor, value) != QRN_ERROR_SUCCESS) {
    throw UsageError("a value of " + name + " cannot contain '</" + name + ">'");
  }
}

// The filter of an enumeration, which only printers have.
std::string filterOf(const ListOptions& options) {
  std::string filter;
  for (const auto& [descriptor, value] :
       {std::pair(attribute::kAddress, &options.address), std::pair(attribute::kPortname, &options.portname),
        std::pair(attribute::kPortType, &options.portType)}) {
    if (!value->empty()) {
      setAttribute(filter, descriptor, *value);
    }
  }
  return filter;
}

void list(const ListOptions& options) {
  const Session session;
  const std::string filter = filterOf(options);
  const std::string only = options.kind.empty() && !filter.empty() ? "printer" : options.kind;
  if (!filter.empty() && only != "printer") {
    throw UsageError("only printers are listed by address, port name or port type");
  }
  Json devices = Json::array();
  for (const DeviceKind& kind : deviceKinds()) {
    if (only.empty() || only == kind.name) {
      for (const Device& device : listDevices(session, kind, options.transport, filter)) {
        devices.push_back(describeDevice(session, device));
      }
    }
  }
  printDevices(devices, options.json);
  if (devices.empty() && !options.json) {
    hint("no device is stored: 'qvn discover' finds some, 'qvn device add' stores one");
  }
}

void show(const NamedDevice& options) {
  const Session session;
  const Device device = selectAny(session, options.device, options.kind);
  Json attributes = Json::object();
  for (const std::string_view descriptor : attributeDescriptors()) {
    const std::string name = attributeName(descriptor);
    if (!attributes.contains(name)) {
      if (const auto value = readAttribute(session, device, std::string(descriptor))) {
        attributes[name] = *value;
      }
    }
  }
  if (options.json) {
    printJson({{"kind", device.kind->name}, {"handle", device.handle}, {"attributes", attributes}});
    return;
  }
  std::vector<std::vector<std::string>> rows;
  for (const auto& [name, value] : attributes.items()) {
    rows.push_back({name, cell(value)});
  }
  printTable({"ATTRIBUTE", "VALUE"}, rows);
}

void remove(const NamedDevice& options) {
  const Session session;
  const Device device = selectAny(session, options.device, options.kind);
  const std::string portName = readText(session, device, attribute::kPortname);
  require(device.kind->remove(session.client(), device.handle), "cannot remove " + device.text());
  say(options.quiet, "removed " + device.text() + (portName.empty() ? "" : " (" + portName + ")"));
}

std::string attributeText(const AddOptions& options) {
  std::string text;
  setAttribute(text, attribute::kDevice, options.family);
  setAttribute(text, attribute::kTransport, options.transport);
  AttributeCodec::setLong(text, attribute::kHandle, options.handle);
  const std::pair<const char*, const std::string&> optional[] = {{attribute::kAddress, options.address},
                                                                 {attribute::kPortname, options.portname},
                                                                 {attribute::kPortType, options.portType}};
  for (const auto& [descriptor, value] : optional) {
    if (!value.empty()) {
      setAttribute(text, descriptor, value);
    }
  }
  for (const std::string& attribute : options.attributes) {
    const std::size_t equals = attribute.find('=');
    if (equals == std::string::npos) {
      throw UsageError("--set takes NAME=VALUE, not '" + attribute + "'");
    }
    setAttribute(text, findDescriptor(attribute.substr(0, equals)), attribute.substr(equals + 1));
  }
  return text;
}

// Writes under the lock that every store operation of the library takes.
void store(const DeviceKind& kind, std::uint32_t handle, const std::string& text) {
  platform::ErrorCode error = platform::kSuccess;
  const auto lock = platform::NamedMutex::create("persistenceStoreMutex", false, {true, false}, error);
  if (!lock) {
    throw Failure("cannot lock the device stores", error);
  }
  lock->acquire(platform::kInfinite);
  struct Release {
    platform::NamedMutex& mutex;
    ~Release() { mutex.release(); }
  } release{*lock};
  const std::string name = std::to_string(handle);
  if (readLibraryValue(kind.store, name)) {
    throw Failure(std::string(kind.name) + " " + name + " is stored already", QRN_ERROR_DUP_NAME);
  }
  writeLibraryValue(kind.store, name, {platform::registry::ValueType::String, text});
}

void add(const AddOptions& options) {
  if (options.handle == 0) {
    throw UsageError("a handle is a number from 1 up");
  }
  const Session session;
  const std::string text = attributeText(options);
  for (const DeviceFamily& family : deviceFamilies()) {
    if (options.family != family.name) {
      continue;
    }
    const DeviceKind& kind = kindNamed(family.kind);
    if (&kind == &deviceKinds().front() && !options.portname.empty()) {
      require(QvnValidatePortName(session.client(), options.portname.c_str()),
              "the port name '" + options.portname + "' cannot be used");
    }
    store(kind, options.handle, text);
    say(options.quiet, "added " + std::string(kind.name) + " " + std::to_string(options.handle));
  }
}

void addDeviceArguments(Verb verb, NamedDevice& options) {
  verb.addOption("DEVICE", options.device, "The device's handle or port name").required();
  verb.addOption("--kind", options.kind, "printer, scanner or hid; needed when several have the handle")
      .oneOf({"printer", "scanner", "hid"});
}

}  // namespace

void addDeviceCommand(Verb& root) {
  Verb verb = root.addVerb("device", "Add, list, show and remove stored devices");
  verb.requireVerb();
  verb.footer(
      "Examples:\n"
      "  qvn device list\n"
      "  qvn device show LAB1 --json\n"
      "  qvn device add --family BpdPrinter --transport IPv4 --handle 7 \\\n"
      "    --address 192.0.2.17 --set IpPort=9100 --portname LAB1\n"
      "  qvn device remove 7");

  const auto listOptions = std::make_shared<ListOptions>();
  Verb listVerb = verb.addVerb("list", "List the stored devices of the registered transports");
  listVerb.addOption("--kind", listOptions->kind, "Only printer, scanner or hid")
      .oneOf({"printer", "scanner", "hid"});
  listVerb
      .addOption("--transport", listOptions->transport,
                 "Only of this transport, registered or not, or of this kind of transport")
      .showDefault();
  listVerb.addOption("--address", listOptions->address, "Only printers with this address");
  listVerb.addOption("--portname", listOptions->portname,
                     "Only the printer with this port name, in any case");
  listVerb.addOption("--port-type", listOptions->portType, "Only printers with this type of port");
  listVerb.addJson(listOptions->json);
  listVerb.footer("Example:\n  qvn device list");
  listVerb.callback([listOptions] { list(*listOptions); });

  const auto showOptions = std::make_shared<NamedDevice>();
  Verb showVerb = verb.addVerb("show", "Show the attributes of a device");
  addDeviceArguments(showVerb, *showOptions);
  showVerb.addJson(showOptions->json);
  showVerb.footer("Example:\n  qvn device show LAB1 --json");
  showVerb.callback([showOptions] { show(*showOptions); });

  const auto removeOptions = std::make_shared<NamedDevice>();
  Verb removeVerb = verb.addVerb("remove", "Forget a device");
  addDeviceArguments(removeVerb, *removeOptions);
  addQuiet(removeVerb, removeOptions->quiet);
  removeVerb.footer("Example:\n  qvn device remove 7");
  removeVerb.callback([removeOptions] { remove(*removeOptions); });

  const auto addOptions = std::make_shared<AddOptions>();
  std::vector<std::string> families;
  for (const DeviceFamily& family : deviceFamilies()) {
    families.emplace_back(family.name);
  }
  Verb addVerb = verb.addVerb("add", "Store a device that no discovery finds");
  addVerb.addOption("--family", addOptions->family, "The family of the device's driver")
      .required()
      .oneOf(families);
  addVerb.addOption("--transport", addOptions->transport, "The transport that reaches it").required();
  addVerb.addOption("--handle", addOptions->handle, "A handle that no device of its kind has").required();
  addVerb.addOption("--address", addOptions->address, "Where the transport finds it");
  addVerb.addOption("--portname", addOptions->portname, "The name that people print to");
  addVerb.addOption("--port-type", addOptions->portType, "Its type of port");
  addVerb.addOption("--set", addOptions->attributes, "Another attribute, NAME=VALUE; may be repeated")
      .oneValueEach();
  addQuiet(addVerb, addOptions->quiet);
  addVerb.footer(
      "Example:\n"
      "  qvn device add --family BpdPrinter --transport IPv4 --handle 7 \\\n"
      "    --address 192.0.2.17 --set IpPort=9100 --portname LAB1");
  addVerb.callback([addOptions] { add(*addOptions); });
}

}  // namespace qvn::cli
