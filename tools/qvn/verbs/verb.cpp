#include "verbs/verb.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <optional>
#include <utility>

#include "shared/client/failure.h"
#include "shared/client/text_values.h"

namespace qvn::cli {

namespace {

constexpr char kDeviceVariable[] = "QVN_DEVICE";

// Help as people read it: what a value stands for instead of the parser's type.
class Help : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override {
    if (option->get_lnames().empty()) return option->get_expected_max() > 1 ? " ..." : "";
    if (option->get_items_expected_max() == 0) return "";
    std::string value = option->get_lnames().front();
    std::transform(value.begin(), value.end(), value.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return " " + value;
  }

  std::string make_option_desc(const CLI::Option* option) const override {
    const std::string value = option->get_default_str();
    return option->get_description() + (value.empty() ? "" : "; otherwise " + value);
  }
};

// Throws UsageError when a verb has no option of that name, dashes included.
void checkOption(const CLI::App* app, const std::string& path, const std::string& name) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app->get_options()) {
    for (std::string known : option->get_lnames()) names.push_back(known.insert(0, "--"));
  }
  if (std::find(names.begin(), names.end(), name) != names.end()) return;
  throw UsageError("'" + path + "' has no option '" + name + "'" + didYouMean(name, names));
}

// The verb of that name below another one. Throws UsageError when there is none.
const CLI::App* findVerb(const CLI::App* app, const std::string& path, const std::string& name) {
  std::vector<std::string> names;
  for (const CLI::App* verb : app->get_subcommands({})) {
    if (verb->get_name() == name) return verb;
    names.push_back(verb->get_name());
  }
  const std::string where = app->get_parent() == nullptr ? "no verb '" : "'" + path + "' has no verb '";
  throw UsageError(where + name + "'" + didYouMean(name, names));
}

// Throws UsageError for the first word that stands where a verb or an option must and is none.
void checkWords(const CLI::App* app, const std::vector<std::string>& arguments) {
  std::string path = app->get_name();
  for (const std::string& word : arguments) {
    if (word == "--") return;
    if (word.starts_with("--")) checkOption(app, path, word.substr(0, word.find('=')));
    if (word.starts_with('-') || app->get_subcommands({}).empty()) continue;
    app = findVerb(app, path, word);
    path.append(" ").append(word);
  }
}

}  // namespace

Option Option::required() { return Option(option_->required()); }

Option Option::oneOf(const std::vector<std::string>& values) {
  return Option(option_->check(CLI::IsMember(values)));
}

Option Option::between(int least, int most) { return Option(option_->check(CLI::Range(least, most))); }

Option Option::showDefault() { return Option(option_->capture_default_str()); }

Option Option::oneValueEach() { return Option(option_->allow_extra_args(false)); }

Option Option::excludes(Option other) { return Option(option_->excludes(other.option_)); }

Verb Verb::addVerb(const std::string& name, const std::string& help) {
  CLI::App* const verb = app_->add_subcommand(name, help);
  verb->footer("");  // not that of the verb above it
  return Verb(verb);
}

template <typename Value>
Option Verb::addOption(const std::string& names, Value& value, const std::string& help) {
  return Option(app_->add_option(names, value, help));
}

template Option Verb::addOption(const std::string&, std::string&, const std::string&);
template Option Verb::addOption(const std::string&, std::uint32_t&, const std::string&);
template Option Verb::addOption(const std::string&, std::optional<std::uint32_t>&, const std::string&);
template Option Verb::addOption(const std::string&, std::size_t&, const std::string&);
template Option Verb::addOption(const std::string&, std::vector<std::string>&, const std::string&);

Option Verb::addFlag(const std::string& names, bool& value, const std::string& help) {
  return Option(app_->add_flag(names, value, help));
}

template <typename Value>
Option Verb::addDevice(Value& device, const std::string& what, const std::string& otherwise) {
  CLI::Option* const option =
      app_->add_option("-d,--device", device,
                       "The " + what + "'s handle or port name; " +
                           (otherwise.empty() ? "not needed for the only " + what : otherwise));
  return Option(option->envname(kDeviceVariable));
}

template Option Verb::addDevice(std::string&, const std::string&, const std::string&);
template Option Verb::addDevice(std::vector<std::string>&, const std::string&, const std::string&);

Option Verb::addJson(bool& json, const std::string& help) { return addFlag("-j,--json", json, help); }

void Verb::requireVerb() { app_->require_subcommand(1); }

void Verb::footer(const std::string& text) { app_->footer(text); }

void Verb::callback(std::function<void()> run) { app_->callback(std::move(run)); }

CommandLine::CommandLine(const std::string& name, const std::string& help, const std::string& version)
    : app_(std::make_unique<CLI::App>(help, name)) {
  app_->set_version_flag("-v,--version", version, "Print the version and exit");
  app_->set_help_flag("-h,--help", "Print this help and exit");
  app_->require_subcommand(1);
  app_->formatter(std::make_shared<Help>());
}

CommandLine::~CommandLine() = default;

void CommandLine::run(std::vector<std::string> arguments) {
  if (!arguments.empty() && arguments.front() == "help") {
    arguments.erase(arguments.begin());
    arguments.emplace_back("--help");
  }
  checkWords(app_.get(), arguments);
  std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
  try {
    app_->parse(std::move(arguments));
  } catch (const CLI::Success& request) {
    app_->exit(request);
  } catch (const CLI::ParseError& error) {
    throw UsageError(std::string(error.what()) +
                     "\nRun 'qvn --help', or --help after a verb, for what can be said.");
  }
}

}  // namespace qvn::cli
