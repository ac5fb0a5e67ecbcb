// How verbs are put on the command line: their options, their help and what they do. Only verb.cpp knows the
// library that parses, whose header costs more to compile than all of a verb.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace qvn::cli {

// An option or argument, which belongs to its verb; each function gives it back, so that calls can be
// chained.
class Option {
 public:
  explicit Option(CLI::Option* option) : option_(option) {}

  Option required();
  Option oneOf(const std::vector<std::string>& values);
  Option between(int least, int most);
  // Its help shows the value that the variable has now.
  Option showDefault();
  // Of a list: each mention takes one value, so that arguments may follow it.
  Option oneValueEach();
  Option excludes(Option other);

 private:
  CLI::Option* option_;
};

// A verb, which belongs to the command line.
class Verb {
 public:
  explicit Verb(CLI::App* app) : app_(app) {}

  Verb addVerb(const std::string& name, const std::string& help);
  // Names without dashes are arguments, taken in the order in which they were added. `value` takes what the
  // command line says: a std::string, std::uint32_t, std::optional<std::uint32_t>, std::size_t or
  // std::vector<std::string>. It lives at least as long as the callback.
  template <typename Value>
  Option addOption(const std::string& names, Value& value, const std::string& help);
  Option addFlag(const std::string& names, bool& value, const std::string& help);

  // What many verbs have, in the same words. `what` is printer, scanner, hid or device; one that is not named
  // is that of QVN_DEVICE, and without that `otherwise`. The value is a text, or a list of them.
  template <typename Value>
  Option addDevice(Value& device, const std::string& what, const std::string& otherwise = "");
  Option addJson(bool& json, const std::string& help = "Print JSON");

  // One of its verbs must follow.
  void requireVerb();
  // Below the options in its help.
  void footer(const std::string& text);
  // Called once the whole command line has been read.
  void callback(std::function<void()> run);

 private:
  CLI::App* app_;
};

// The whole command line.
class CommandLine {
 public:
  CommandLine(const std::string& name, const std::string& help, const std::string& version);
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  // What the verbs are added to.
  Verb root() { return Verb(app_.get()); }

  // Carries out the verb that the arguments name, whose exceptions pass; prints help and version, also when
  // the first word is "help". Throws UsageError when they cannot be read.
  void run(std::vector<std::string> arguments);

 private:
  std::unique_ptr<CLI::App> app_;
};

}  // namespace qvn::cli
