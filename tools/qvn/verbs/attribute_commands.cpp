// qvn get and qvn set: single attributes of a device.
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

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

// What a transport changes is its own; no function tells.
constexpr char kChangedByIpv4[] =
    "the IPv4 transport changes Address, Nickname, Portname, PortType, TrueEndOfJob";

struct Options {
  std::string key;
  std::string value;
  std::string device;
  std::string kind;
  bool json = false;
  bool quiet = false;
};

void get(const Options& options) {
  const std::string descriptor = findDescriptor(options.key);
  const Session session;
  const Device device = selectAny(session, options.device, options.kind);
  const auto value = readAttribute(session, device, descriptor);
  if (!value) {
    throw Failure(device.text() + " has no " + attributeName(descriptor), QRN_ERROR_NOT_FOUND);
  }
  if (options.json) {
    printJson({{"name", attributeName(descriptor)}, {"value", *value}});
  } else {
    std::cout << cell(*value) << '\n';
  }
}

void set(const Options& options) {
  const std::string descriptor = findDescriptor(options.key);
  const std::string name = attributeName(descriptor);
  const Session session;
  const Device device = selectPrinter(session, options.device);
  const char* key = descriptor.c_str();
  std::uint32_t result = QRN_ERROR_SUCCESS;
  if (AttributeCodec::isLong(descriptor)) {
    const auto number = parseNumber(options.value);
    if (!number) {
      throw UsageError(name + " is a number, '" + options.value + "' is none");
    }
    result = QvnSetLongPrinter(session.client(), device.handle, key, *number);
  } else if (AttributeCodec::isByteArray(descriptor)) {
    const auto bytes = parseHex(options.value);
    if (!bytes) {
      throw UsageError(name + " is bytes in hexadecimal, '" + options.value + "' is not");
    }
    result = QvnSetByteArrayPrinter(session.client(), device.handle, key,
                                    reinterpret_cast<const std::uint8_t*>(bytes->data()),
                                    static_cast<std::uint32_t>(bytes->size()));
  } else {
    result = QvnSetStringPrinter(session.client(), device.handle, key, options.value.c_str(),
                                 static_cast<std::uint32_t>(options.value.size()));
  }
  const std::string sentence = "cannot set " + name + " of " + device.text();
  if (result == QRN_ERROR_INVALID_PARAMETER && readText(session, device, attribute::kTransport) == "IPv4") {
    throw Failure(sentence + ": " + withCode(kChangedByIpv4, result));
  }
  require(result, sentence);
  say(options.quiet, name + " of " + device.text() + " is now " + options.value);
}

}  // namespace

void addAttributeCommands(Verb& root) {
  std::string names = "Attributes:\n ";
  std::size_t column = 1;
  std::string previous;
  for (const std::string_view descriptor : attributeDescriptors()) {
    const std::string name = attributeName(descriptor);
    if (name == previous) {
      continue;  // the two forms of one name stand side by side
    }
    if (column + name.size() > 78) {
      names += "\n ";
      column = 1;
    }
    names += " " + name + ",";
    column += name.size() + 2;
    previous = name;
  }
  names.pop_back();

  const auto getOptions = std::make_shared<Options>();
  Verb getVerb = root.addVerb("get", "Read an attribute of a stored device");
  getVerb.addOption("KEY", getOptions->key, "The attribute's name, or its whole descriptor").required();
  getVerb.addDevice(getOptions->device, "device", "not needed for the only printer");
  getVerb
      .addOption("--kind", getOptions->kind, "printer, scanner or hid; needed when several have the handle")
      .oneOf({"printer", "scanner", "hid"});
  getVerb.addJson(getOptions->json);
  getVerb.footer("Examples:\n  qvn get Portname\n  qvn get SerialNumber -d 40401\n\n" + names);
  getVerb.callback([getOptions] { get(*getOptions); });

  const auto setOptions = std::make_shared<Options>();
  Verb setVerb = root.addVerb("set", "Change an attribute of a printer, if its transport agrees");
  setVerb.addOption("KEY", setOptions->key, "The attribute's name, or its whole descriptor").required();
  setVerb.addOption("VALUE", setOptions->value, "A number, a text, or bytes in hexadecimal").required();
  setVerb.addDevice(setOptions->device, "printer");
  addQuiet(setVerb, setOptions->quiet);
  setVerb.footer(std::string("Of the transports that come with the library, ") + kChangedByIpv4 +
                 ".\n\nExamples:\n  qvn set Portname LAB1 -d 40001\n  qvn set TrueEndOfJob 1");
  setVerb.callback([setOptions] { set(*setOptions); });
}

}  // namespace qvn::cli
