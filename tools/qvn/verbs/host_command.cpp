// qvn host: what print jobs tell about this machine.
#include <algorithm>
#include <cctype>
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
#include "shared/client/text_values.h"
#include "verbs/commands.h"
#include "verbs/quiet.h"
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

// The library stores any text; a printer's panel takes four digits and a driver a number.
void check(const char* key, const std::string& value) {
  const bool isPin = value.size() == 4 && std::all_of(value.begin(), value.end(),
                                                      [](unsigned char c) { return std::isdigit(c) != 0; });
  if (key == attribute::kPinNumber && !isPin) throw UsageError("PinNumber is four digits, for example 4711");
  if (key == attribute::kCodePage && !parseNumber(value)) {
    throw UsageError("CodePage is the number of a code page, for example 1252");
  }
}

void set(const std::string& name, const std::string& value, bool quiet) {
  const char* const key = keyNamed(name);
  check(key, value);
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
  say(quiet, name + " is now " + value);
}

}  // namespace

void addHostCommand(Verb& root) {
  struct Options {
    std::string name;
    std::string value;
    bool json = false;
    bool quiet = false;
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
  getVerb.addJson(options->json);
  getVerb.footer("Examples:\n  qvn host get\n  qvn host get PcName");
  getVerb.callback([options] { get(options->name, options->json); });

  Verb setVerb = verb.addVerb("set", "Change one of them");
  setVerb.addOption("KEY", options->name, "PcName, PinNumber or CodePage").required();
  setVerb.addOption("VALUE", options->value, "Its value").required();
  addQuiet(setVerb, options->quiet);
  setVerb.footer("Example:\n  qvn host set PinNumber 4711");
  setVerb.callback([options] { set(options->name, options->value, options->quiet); });
}

}  // namespace qvn::cli
