// qvn host: what print jobs tell about this machine.
#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "qvn/qvn.h"
#include "qvn/transport/attributes.h"
#include "shared/client/attribute_table.h"
#include "shared/client/failure.h"
#include "shared/client/output.h"
#include "shared/client/read_whole.h"
#include "shared/client/session.h"
#include "verbs/commands.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

constexpr const char* kKeys[] = {attribute::kPcName, attribute::kPinNumber, attribute::kCodePage};

const char* keyNamed(const std::string& name) {
  for (const char* const key : kKeys) {
    if (attributeName(key) == name) {
      return key;
    }
  }
  throw UsageError("there is no '" + name + "': use PcName, PinNumber or CodePage");
}

std::string read(const Session& session, const char* key) {
  std::vector<char> value;
  const std::uint32_t result = readWhole(
      [&](char* buffer, std::uint32_t size, std::uint32_t* required) {
        return QvnGetHostInfo(session.client(), key, buffer, size, required);
      },
      value);
  require(result, "cannot read " + attributeName(key));
  // A default is shorter than the size that is required for it.
  return {value.begin(), std::find(value.begin(), value.end(), '\0')};
}

void get(const std::string& name, bool json) {
  const char* const asked = name.empty() ? nullptr : keyNamed(name);
  const Session session;
  if (asked != nullptr) {
    const std::string value = read(session, asked);
    if (json) {
      printJson({{"name", name}, {"value", value}});
    } else {
      std::cout << value << '\n';
    }
    return;
  }
  Json listed = Json::array();
  for (const char* const key : kKeys) {
    listed.push_back({{"name", attributeName(key)}, {"value", read(session, key)}});
  }
  printListing(listed, {"name", "value"}, json);
}

void set(const std::string& name, const std::string& value) {
  const char* const key = keyNamed(name);
  if (value.find("</" + name + ">") != std::string::npos) {
    throw UsageError(name + " cannot contain '</" + name + ">'");
  }
  const Session session;
  require(QvnSetHostInfo(session.client(), key, value.c_str(), static_cast<std::uint32_t>(value.size() + 1)),
          "cannot set " + name);
  // The library does not tell when the registry refuses the value.
  if (read(session, key) != value) {
    throw Failure("cannot set " + name + ": the registry did not take the value");
  }
}

}  // namespace

void addHostCommand(Verb& root) {
  struct Options {
    std::string name;
    std::string value;
    bool json = false;
  };
  const auto options = std::make_shared<Options>();
  Verb verb = root.addVerb("host", "What print jobs tell about this machine");
  verb.requireVerb();
  verb.footer(
      "PcName is the machine's name, PinNumber the four digits that open its confidential jobs at the\n"
      "printer, CodePage the number of its code page. One that was never set gets a default when it is "
      "read.\n\n"
      "Examples:\n"
      "  qvn host get\n"
      "  qvn host get PcName\n"
      "  qvn host set PinNumber 4711");

  Verb getVerb = verb.addVerb("get", "Print one of them, or all");
  getVerb.addOption("KEY", options->name, "PcName, PinNumber or CodePage");
  getVerb.addFlag("--json", options->json, "Print JSON");
  getVerb.callback([options] { get(options->name, options->json); });

  Verb setVerb = verb.addVerb("set", "Change one of them");
  setVerb.addOption("KEY", options->name, "PcName, PinNumber or CodePage").required();
  setVerb.addOption("VALUE", options->value, "Its value").required();
  setVerb.callback([options] { set(options->name, options->value); });
}

}  // namespace qvn::cli
