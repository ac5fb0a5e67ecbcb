// A simulated scanner with a picture on its glass, and a machine that knows it.
#pragma once

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/content_of.h"
#include "support/link/device_link.h"
#include "support/pictures/picture.h"
#include "support/process/child.h"
#include "support/process/eventually.h"
#include "support/process/successful_run.h"
#include "support/simulator/simulator_process.h"

namespace qvn::test {

inline constexpr char kCpd[] = "CpdPrinter";
inline constexpr char kBpd[] = "BpdPrinter";

// For suites that run with each family.
inline std::string familyName(const testing::TestParamInfo<const char*>& family) { return family.param; }

class ScanStation : public testing::Test {
 protected:
  // The family is that of the device, as the simulator names it.
  explicit ScanStation(std::string family = kCpd)
      : family_(std::move(family)), home_(std::getenv("QVN_HOME")), picture_(noise(850, 1170)) {
    std::filesystem::create_directory(home_ / "out");
  }

  // Starts the device, whose glass is 850 by 1170 dots at 100 dpi, and lets the transport find it.
  void start(std::vector<std::string> arguments = {}) {
    writePng(home_ / "glass.png", picture_);
    arguments.insert(arguments.end(), {"--family", family_, "--page", (home_ / "glass.png").string(),
                                       "--scans", scans().string(), "--trace", trace().string()});
    device_ = DeviceLink::start(std::move(arguments));
    ok({"registry", "import", "-"}, "[-Software]");
    link_.connect(*device_);
  }

  void TearDown() override {
    device_.reset();
    std::filesystem::remove_all(home_ / "out");
    std::filesystem::remove_all(scans());
  }

  SimulatorProcess& device() { return *device_; }
  const std::string& family() const { return family_; }
  const Picture& glass() const { return picture_; }
  std::filesystem::path home() const { return home_; }
  // A file in a directory that holds nothing else.
  std::string out(const std::string& name) const { return (home_ / "out" / name).string(); }
  std::vector<std::string> filesLeft() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(home_ / "out")) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  // What the device says it has sent as its page of that number.
  Picture sent(int page) const { return readPng(scans() / ("page-" + std::to_string(page) + ".png")); }

  // Returns once the device is in the middle of its first page.
  void waitUntilPageIsSent() {
    const std::string block = family_ == kBpd ? "<Scan.Data>" : "1B7364";
    EXPECT_TRUE(eventually([&] { return contentOf(trace()).find(block) != std::string::npos; }));
  }

 private:
  std::filesystem::path scans() const { return home_ / "scans"; }
  std::filesystem::path trace() const { return home_ / "trace"; }

  std::string family_;
  std::filesystem::path home_;
  Picture picture_;
  DeviceLink link_;
  std::unique_ptr<SimulatorProcess> device_;
};

}  // namespace qvn::test
