// regedit: imports a registry script. The library's installation starts it as "regedit /s /i PATH".
#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <system_error>

#include "platform/base/clock.h"
#include "shared/registry-script/registry_script.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

// A silent import is one that a program has started, which looks for 5 s whether this process runs before it
// takes it for ended: it must be there to be seen.
constexpr qvn::platform::Milliseconds kSilentStay = 100;

void importScript(const std::string& path) {
  const std::filesystem::path file = qvn::findRegistryScript(path);
  std::ifstream in(file, std::ios::binary);
  if (!in) throw std::system_error(errno, std::generic_category(), file.string());
  std::size_t line = 0;
  const qvn::platform::ErrorCode error =
      qvn::applyRegistryChanges(qvn::parseRegistryScript(qvn::readRegistryScript(in)), line);
  if (error == qvn::platform::kSuccess) return;
  const std::string where = line == 0 ? "" : " at line " + std::to_string(line);
  throw std::runtime_error("the registry answered " + std::to_string(error) + where);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Imports a registry script, all of it or nothing.", "regedit"};
  app.allow_windows_style_options();
  bool silent = false;
  std::string path;
  app.add_flag("-s", silent, "Say nothing, whatever happens");
  app.add_flag("-i")->description("Import, which is all that it does");
  app.add_option("PATH", path, "The script, as in c:\\windows\\system32\\qr__.loc")->required();
  app.footer("Exit codes: 0 imported, 1 nothing was imported, 2 the command line is wrong.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    return app.exit(request);
  } catch (const CLI::ParseError& error) {
    std::cerr << "regedit: " << error.what() << '\n';
    return kWrongUsage;
  }
  if (silent) qvn::platform::sleep(kSilentStay);
  try {
    importScript(path);
  } catch (const std::exception& error) {
    if (!silent) std::cerr << "regedit: nothing was imported from '" << path << "': " << error.what() << '\n';
    return kFailed;
  }
  return 0;
}
