// A scan station whose scanner is used by Debian's programs for SANE, with the backend under test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "end_to_end/scan/scan_station.h"

namespace qvn::test {

class SanePrograms : public ScanStation {
 protected:
  static constexpr char kScanimage[] = "/usr/bin/scanimage";

  using ScanStation::ScanStation;

  // Writes the files of a machine's /etc/sane.d, which names the backends that are asked.
  void configure(const std::string& machine, const std::map<std::string, std::string>& files) const {
    std::filesystem::create_directories(home() / "sane" / machine);
    for (const auto& [name, content] : files) std::ofstream(home() / "sane" / machine / name) << content;
  }

  std::vector<std::pair<std::string, std::string>> environmentOf(const std::string& machine) const {
    return {{"SANE_CONFIG_DIR", (home() / "sane" / machine).string()},
            {"LD_LIBRARY_PATH", QVN_SANE_BACKEND_DIRECTORY},
            {"LD_PRELOAD", preloaded()},
            // What the programs and the loader of the backends leave behind is theirs.
            {"ASAN_OPTIONS", "detect_leaks=0"},
            {"LC_ALL", "C"}};
  }

  // The sanitizer's runtime before all that is loaded anyhow.
  static std::string preloaded() {
    const char* const also = std::getenv("LD_PRELOAD");
    return QVN_SANITIZER_RUNTIME + (also != nullptr ? std::string(":") + also : std::string());
  }

  Result scanimage(const std::string& machine, std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), kScanimage);
    return run(arguments, "", environmentOf(machine));
  }
};

}  // namespace qvn::test
