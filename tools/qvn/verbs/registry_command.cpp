// qvn registry: the registry as a script.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <system_error>

#include "library_settings.h"
#include "shared/client/failure.h"
#include "shared/registry-script/registry_script.h"
#include "verbs/commands.h"
#include "verbs/quiet.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

// Writes the file beside its place first, so that a copy saved before is lost only to a whole one. What is no
// plain file, /dev/stdout for one, is written as it is.
void writeWhole(const std::string& file, const std::string& text) {
  std::error_code ignored;
  const std::filesystem::file_status status = std::filesystem::symlink_status(file, ignored);
  const bool plain = !exists(status) || is_regular_file(status);
  const std::string target = plain ? file + ".part" : file;
  std::ofstream out(target, std::ios::binary | std::ios::trunc);
  std::error_code error;
  if (!(out << text) || !out.flush()) {
    error = std::error_code(errno, std::generic_category());
  }
  out.close();
  if (!error && plain) {
    std::filesystem::rename(target, file, error);
  }
  if (!error) {
    return;
  }
  if (plain) {
    std::filesystem::remove(target, ignored);
  }
  throw Failure("cannot write '" + file + "': " + error.message());
}

void exportScript(const std::string& file, const std::string& key, bool quiet) {
  std::string script;
  require(writeRegistryScript(key, script), "cannot read the key '" + key + "'");
  if (file == "-") {
    std::cout << script;
    return;
  }
  writeWhole(file, script);
  say(quiet, "wrote '" + key + "' to " + file);
}

void importScript(const std::string& file, bool quiet) {
  std::ifstream stream;
  if (file != "-") {
    stream.open(file, std::ios::binary);
    if (!stream) {
      throw Failure("cannot read '" + file + "': " + std::strerror(errno));
    }
  }
  std::size_t line = 0;
  std::size_t count = 0;
  std::uint32_t result = 0;
  try {
    const auto changes = parseRegistryScript(readRegistryScript(file == "-" ? std::cin : stream));
    count = changes.size();
    result = applyRegistryChanges(changes, line);
  } catch (const RegistryScriptError& error) {
    throw Failure(file + ": " + error.what() + "; nothing was imported");
  } catch (const std::system_error& error) {
    throw Failure("cannot read '" + file + "': " + error.code().message());
  }
  const std::string where = line == 0 ? "" : " at line " + std::to_string(line);
  require(result, "nothing was imported from '" + file + "'; it failed" + where);
  say(quiet, "made " + std::to_string(count) + (count == 1 ? " change" : " changes") + " from " +
                 (file == "-" ? "standard input" : file));
}

}  // namespace

void addRegistryCommand(Verb& root) {
  struct Options {
    std::string file = "-";
    std::string key;
    bool quiet = false;
  };
  const auto options = std::make_shared<Options>();
  options->key = libraryKey("");
  options->key.pop_back();
  Verb verb = root.addVerb("registry", "Save the registry as a script, or carry a script out");
  verb.requireVerb();
  verb.footer(
      "An import is made whole or not at all; it changes what the script names and leaves the rest.\n\n"
      "Examples:\n"
      "  qvn registry export saved.qvnreg\n"
      "  qvn registry export --key 'Software\\Quorin Tools'\n"
      "  qvn registry import saved.qvnreg");

  Verb exportVerb = verb.addVerb("export", "Write a key and everything below it");
  exportVerb.addOption("FILE", options->file, "Where to; - is standard output").showDefault();
  exportVerb.addOption("--key", options->key, "The key").showDefault();
  addQuiet(exportVerb, options->quiet);
  exportVerb.footer(
      "Examples:\n"
      "  qvn registry export saved.qvnreg\n"
      "  qvn registry export --key 'Software\\Quorin Tools'");
  exportVerb.callback([options] { exportScript(options->file, options->key, options->quiet); });

  Verb importVerb = verb.addVerb("import", "Make the changes of a script");
  importVerb.addOption("FILE", options->file, "The script; - is standard input").required();
  addQuiet(importVerb, options->quiet);
  importVerb.footer("Example:\n  qvn registry import saved.qvnreg");
  importVerb.callback([options] { importScript(options->file, options->quiet); });
}

}  // namespace qvn::cli
