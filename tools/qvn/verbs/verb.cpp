#include "verbs/verb.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <utility>

#include "shared/client/failure.h"

namespace qvn::cli {

Option Option::required() { return Option(option_->required()); }

Option Option::oneOf(const std::vector<std::string>& values) {
  return Option(option_->check(CLI::IsMember(values)));
}

Option Option::between(int least, int most) { return Option(option_->check(CLI::Range(least, most))); }

Option Option::showDefault() { return Option(option_->capture_default_str()); }

Option Option::oneValueEach() { return Option(option_->allow_extra_args(false)); }

Option Option::excludes(Option other) { return Option(option_->excludes(other.option_)); }

Verb Verb::addVerb(const std::string& name, const std::string& help) {
  return Verb(app_->add_subcommand(name, help));
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

void Verb::requireVerb() { app_->require_subcommand(1); }

void Verb::footer(const std::string& text) { app_->footer(text); }

void Verb::callback(std::function<void()> run) { app_->callback(std::move(run)); }

CommandLine::CommandLine(const std::string& name, const std::string& help, const std::string& version)
    : app_(std::make_unique<CLI::App>(help, name)) {
  app_->set_version_flag("--version", version, "Print the version and exit");
  app_->set_help_flag("-h,--help", "Print this help and exit");
  app_->require_subcommand(1);
}

CommandLine::~CommandLine() = default;

void CommandLine::run(int argc, char** argv) {
  try {
    app_->parse(argc, argv);
  } catch (const CLI::Success& request) {
    app_->exit(request);
  } catch (const CLI::ParseError& error) {
    throw UsageError(std::string(error.what()) +
                     "\nRun 'qvn --help', or --help after a verb, for what can be said.");
  }
}

}  // namespace qvn::cli
