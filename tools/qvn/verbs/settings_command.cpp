// qvn settings: the values in the registry that the library reads.
#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "common/settings/setting_table.h"
#include "library_settings.h"
#include "shared/client/failure.h"
#include "shared/client/output.h"
#include "shared/client/text_values.h"
#include "verbs/commands.h"
#include "verbs/quiet.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

namespace registry = platform::registry;

constexpr std::size_t kHostIdLength = 6;
constexpr std::size_t kMaxModelNameLength = 255;

enum class Type { Number, Mask, Bytes, Text };

struct Setting {
  const char* name;
  const char* key;
  Type type;
  std::optional<std::uint32_t> byDefault;
  const char* meaning;
};

constexpr Setting of(const LongSetting& setting, const char* meaning) {
  return {setting.name, setting.key, Type::Number, setting.byDefault, meaning};
}

// Who else reads settings has defaults of its own; a test compares these with what is read there.
constexpr Setting ofIpv4(const char* name, std::uint32_t byDefault, const char* meaning) {
  return {name, "Ip1\\Settings\\", Type::Number, byDefault, meaning};
}
constexpr Setting ofUsb1(const char* name, std::uint32_t byDefault, const char* meaning) {
  return {name, setting_key::kUsb1Settings, Type::Number, byDefault, meaning};
}
constexpr Setting ofLog(const char* component, std::uint32_t byDefault, const char* meaning) {
  return {component, setting_key::kLogger, Type::Mask, byDefault, meaning};
}

constexpr Setting kSettings[] = {
    of(setting::kCpdPrinterMwo, "1: print data of Cpd printers is buffered and sent by a thread"),
    of(setting::kMwoBufferHwm, "buffers that wait before the writing program is slowed down"),
    of(setting::kMwoBufferLwm, "buffers that wait when it goes on; less than MwoBufferHwm"),
    of(setting::kAioLockEnabled, "1: a Cpd printer is locked against copying for a job's time"),
    of(setting::kCpdPrinterDate, "1: Cpd printers are told the date at the start of a job"),
    {"CpdPrinterHostId", setting_key::kSettings, Type::Bytes, std::nullopt,
     "6 bytes that name this machine beside the date; drawn once"},
    of(setting::kTeojInterval, "ms between two questions whether a Cpd job has come out"),
    of(setting::kTeojDuration, "ms after which they end"),
    of(setting::kJobAccountMarker, "leading bytes of a Bpd job searched for an account number"),
    of(setting::kScanCancelWaitDuration, "ms that a cancelled Cpd scan waits for its last status"),
    of(setting::kCpdScanPerformanceNotifications, "1: Cpd scanners notify the progress of a scan"),
    {"Usb1BpdScanTimeoutMultiplier", setting_key::kUsb1Settings, Type::Number, std::nullopt,
     "factor of a Bpd scan job's time limit"},
    ofIpv4("NpaTimeout", 5000, "IPv4: ms until a device has accepted a connection"),
    ofIpv4("NpaWriteTimeout", 10000, "IPv4: ms until a packet has gone out"),
    ofIpv4("ReadTimeout", 15000, "IPv4: ms from a packet to its reply"),
    ofIpv4("PJLWriteTimeout", 30000, "IPv4: ms without the device taking any print data"),
    ofIpv4("9200UnicastDiscoveryTimeout", 1000, "IPv4: ms that a discovery waits for answers"),
    ofUsb1("Usb1NpaWriteTimeout", 10000, "USB1: ms until a packet has gone out"),
    ofUsb1("Usb1ReadTimeout", 15000, "USB1: ms from a packet to its reply"),
    ofUsb1("Usb1PJLWriteTimeout", 30000, "USB1: ms without the device taking any print data"),
    ofUsb1("Usb1WriteSize", 65536, "USB1: bytes that one transfer sends"),
    ofUsb1("Usb1ReadSize", 16384, "USB1: bytes that one transfer asks for"),
    ofUsb1("Usb1DetachKernelDriver", 1,
           "1: an interface is taken from a driver of the system that nobody uses"),
    of(setting::kDeleteStoreOnUninstall, "1: uninstalling also deletes what installations share"),
    {"DefaultModelId", "Runtime\\", Type::Number, 0,
     "the default model: USB vendor id times 65536 plus product id"},
    {"DefaultModelName", "Runtime\\", Type::Text, std::nullopt,
     "its name, from which the print monitor takes its own"},
    of(setting::kStartLog, "1: more than errors is logged; takes effect within 10 s"),
    ofLog("All", 0xFFFFFFFF, "log levels of every component: 1 errors, 2 calls, 4, 8 details"),
    ofLog("Server", 0, "further levels of the functions, transports, printers, scanners"),
    ofLog("ServerHid", 0, "further levels of HIDs"),
    ofLog("Bidi", 0xFFFFFFFF, "further levels of exchanges with devices"),
    ofLog("COMServer", 0, "further levels of the print monitor's installation"),
    ofLog("PrintMonitor", 0xFFFFFFFF, "further levels of the print monitor's start event"),
    ofLog("Shared", 0, "further levels of shared parts"),
    of(setting::kClocktimeInHeader, "1: log lines begin with the local time"),
    of(setting::kProcIdInHeader, "1: log lines tell the process"),
    of(setting::kThreadIdInHeader, "1: log lines tell the thread"),
};

std::string shown(const registry::Value& value, Type type) {
  if (const auto number = registry::dwordOf(value.type, value.data)) {
    if (type != Type::Mask) {
      return std::to_string(*number);
    }
    const auto byte = [&](int shift) { return static_cast<char>(*number >> shift & 0xFF); };
    return "0x" + formatHex(std::string{byte(24), byte(16), byte(8), byte(0)});
  }
  return value.type == registry::ValueType::Binary ? formatHex(value.data) : value.data;
}

// "" when there is none.
std::string defaultOf(const Setting& setting) {
  return setting.byDefault
             ? shown({registry::ValueType::Dword, registry::dwordBytes(*setting.byDefault)}, setting.type)
             : "";
}

// The setting of that name, or one for a path below the library's root such as Ip1\Settings\ReadTimeout.
struct Named {
  std::string key;
  std::string name;
  Type type;
  std::string byDefault;
  bool isKnown = true;
};

Named findSetting(const std::string& name) {
  for (const Setting& setting : kSettings) {
    const std::string key =
        std::string(setting.key) + (std::string_view(setting.key).ends_with('\\') ? "" : "\\");
    if (name == setting.name || name == key + setting.name) {
      return {setting.key, setting.name, setting.type, defaultOf(setting)};
    }
  }
  const std::size_t backslash = name.rfind('\\');
  if (backslash != std::string::npos) {
    return {name.substr(0, backslash + 1), name.substr(backslash + 1), Type::Number, "", false};
  }
  std::vector<std::string> names;
  for (const Setting& setting : kSettings) names.emplace_back(setting.name);
  const std::string meant = didYouMean(name, names);
  throw UsageError("there is no setting '" + name + "'" +
                   (meant.empty()
                        ? "; 'qvn settings list' shows them, and one of a transport is named with its key, "
                          "as in 'Ip1\\Settings\\ReadTimeout'"
                        : meant));
}

// Whether everything that is read below the key is among the settings here.
bool isOurs(const std::string& key) {
  return std::any_of(std::begin(kSettings), std::end(kSettings), [&](const Setting& setting) {
    const std::string_view known = setting.key;
    return key == known || key == std::string(known) + "\\";
  });
}

// The buffered writer takes the pair of marks as it belongs together or not at all.
void requireMarks(std::uint32_t high, std::uint32_t low) {
  if (high != 0 && high > low) return;
  throw UsageError("the library would ignore marks of " + std::to_string(high) + " (MwoBufferHwm) and " +
                   std::to_string(low) +
                   " (MwoBufferLwm): the high one is to be the greater; set the other first");
}

// The same for one mark's new value beside the other's own.
void requireFits(const Named& setting, std::uint32_t mark) {
  if (setting.name == setting::kMwoBufferHwm.name) requireMarks(mark, numberSetting(setting::kMwoBufferLwm));
  if (setting.name == setting::kMwoBufferLwm.name) requireMarks(numberSetting(setting::kMwoBufferHwm), mark);
}

// Throws UsageError for a value of the right type that the library would not take as it is.
void requireTaken(const Named& setting, const registry::Value& value) {
  if (const auto number = registry::dwordOf(value.type, value.data)) requireFits(setting, *number);
  if (setting.name == "CpdPrinterHostId" && value.data.size() != kHostIdLength) {
    throw UsageError("CpdPrinterHostId is " + std::to_string(kHostIdLength) + " bytes, not " +
                     std::to_string(value.data.size()));
  } else if (setting.name == "DefaultModelName" && value.data.size() > kMaxModelNameLength) {
    throw UsageError("DefaultModelName has at most " + std::to_string(kMaxModelNameLength) + " bytes");
  } else if (setting.name == "Usb1BpdScanTimeoutMultiplier" &&
             registry::dwordOf(value.type, value.data) == 0U) {
    throw UsageError("the library would take a Usb1BpdScanTimeoutMultiplier of 0 for 1");
  }
}

registry::Value parsed(const Named& setting, const std::string& text) {
  switch (setting.type) {
    case Type::Bytes: {
      const auto bytes = parseHex(text);
      if (!bytes) {
        throw UsageError(setting.name + " is bytes in hexadecimal, '" + text + "' is not");
      }
      return {registry::ValueType::Binary, *bytes};
    }
    case Type::Text:
      return {registry::ValueType::String, text};
    case Type::Number:
    case Type::Mask:
      break;
  }
  const auto number = parseNumber(text);
  if (!number) {
    throw UsageError(setting.name + " is a number, '" + text + "' is none");
  }
  return {registry::ValueType::Dword, registry::dwordBytes(*number)};
}

// A number where it is one, for programs.
Json asJson(const std::string& text, Type type) {
  const auto number = type == Type::Number || type == Type::Mask ? parseNumber(text) : std::nullopt;
  return number ? Json(*number) : Json(text);
}

void list(bool json) {
  Json settings = Json::array();
  for (const Setting& setting : kSettings) {
    const auto value = readLibraryValue(setting.key, setting.name);
    const std::string byDefault = defaultOf(setting);
    const std::string text = value ? shown(*value, setting.type) : byDefault;
    settings.push_back({{"name", setting.name},
                        {"value", json ? asJson(text, setting.type) : Json(text)},
                        {"default", json ? asJson(byDefault, setting.type) : Json(byDefault)},
                        {"key", setting.key},
                        {"meaning", setting.meaning}});
  }
  if (json) {
    printJson(settings);
  } else {
    printListing(settings, {"name", "value", "default", "meaning"}, false);
  }
}

void get(const std::string& name) {
  const Named setting = findSetting(name);
  const auto value = readLibraryValue(setting.key, setting.name);
  if (!value && setting.byDefault.empty()) {
    throw Failure("the setting '" + name + "' has no value", platform::kFileNotFound);
  }
  std::cout << (value ? shown(*value, setting.type) : setting.byDefault) << '\n';
}

void set(const std::string& name, const std::string& text, bool quiet) {
  const Named setting = findSetting(name);
  const registry::Value value = parsed(setting, text);
  if (setting.isKnown) {
    requireTaken(setting, value);
  } else if (isOurs(setting.key)) {
    hint("nothing reads a setting '" + setting.name + "' below '" + setting.key +
         "'; 'qvn settings list' shows what is");
  }
  writeLibraryValue(setting.key, setting.name, value);
  say(quiet, "set " + name + " to " + shown(value, setting.type));
}

void unset(const std::string& name, bool quiet) {
  const Named setting = findSetting(name);
  if (const auto byDefault = parseNumber(setting.byDefault)) requireFits(setting, *byDefault);
  const bool was = removeLibraryValue(setting.key, setting.name);
  say(quiet, name + (was ? " has no value of its own any more" : " had no value of its own") +
                 (setting.byDefault.empty() ? "" : "; its default is " + setting.byDefault));
}

}  // namespace

void addSettingsCommand(Verb& root) {
  struct Options {
    std::string name;
    std::string value;
    bool json = false;
    bool quiet = false;
  };
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("settings", "List, read and change the library's settings");
  verb.requireVerb();
  verb.footer(
      "A running program sees most changes at its next use of the setting.\n\n"
      "Examples:\n"
      "  qvn settings list\n"
      "  qvn settings get TeojDuration\n"
      "  qvn settings set CpdPrinterMwo 0\n"
      "  qvn settings unset CpdPrinterMwo\n"
      "  qvn settings set 'Ip1\\Settings\\ReadTimeout' 5000");

  Verb listVerb = verb.addVerb("list", "List the settings with value, default and meaning");
  listVerb.addJson(options->json);
  listVerb.footer("Example:\n  qvn settings list --json");
  listVerb.callback([options] { list(options->json); });

  Verb getVerb = verb.addVerb("get", "Print one setting's value, or its default");
  getVerb.addOption("NAME", options->name, "The setting's name").required();
  getVerb.footer(
      "Examples:\n  qvn settings get TeojDuration\n  qvn settings get 'Ip1\\Settings\\ReadTimeout'");
  getVerb.callback([options] { get(options->name); });

  Verb setVerb = verb.addVerb("set", "Change one setting");
  setVerb.addOption("NAME", options->name, "The setting's name").required();
  setVerb.addOption("VALUE", options->value, "A number, decimal or with 0x, a text, or bytes in hexadecimal")
      .required();
  addQuiet(setVerb, options->quiet);
  setVerb.footer(
      "The library ignores some values, marks of the buffered writer that do not fit together for one; they "
      "are\n"
      "refused.\n\n"
      "Examples:\n"
      "  qvn settings set CpdPrinterMwo 0\n"
      "  qvn settings set All 0x0000000B\n"
      "  qvn settings set 'Ip1\\Settings\\ReadTimeout' 5000");
  setVerb.callback([options] { set(options->name, options->value, options->quiet); });

  Verb unsetVerb = verb.addVerb("unset", "Take a setting's value away, so that its default holds");
  unsetVerb.addOption("NAME", options->name, "The setting's name").required();
  addQuiet(unsetVerb, options->quiet);
  unsetVerb.footer("Example:\n  qvn settings unset CpdPrinterMwo");
  unsetVerb.callback([options] { unset(options->name, options->quiet); });
}

}  // namespace qvn::cli
