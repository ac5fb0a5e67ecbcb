// A simulated printer and a machine that knows it, with the command line as its only way in.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "support/content_of.h"
#include "support/link/device_link.h"
#include "support/process/child.h"
#include "support/process/successful_run.h"
#include "support/simulator/simulator_process.h"

namespace qvn::test {

class PrintServer : public testing::Test {
 protected:
  PrintServer() : home_(std::getenv("QVN_HOME")) {}

  // Starts the device and lets the transport find it.
  void start(const std::vector<std::string>& faults = {}, const std::string& family = "CpdPrinter") {
    std::vector<std::string> arguments = {"--family", family, "--events", "--jobs",
                                          (home_ / "jobs").string()};
    for (const std::string& fault : faults) arguments.insert(arguments.end(), {"--fault", fault});
    device_ = DeviceLink::start(std::move(arguments));
    ok({"registry", "import", "-"}, "[-Software]");
    // The true end of a job is asked for at intervals, and a job that is lost has none.
    ok({"settings", "set", "TeojInterval", "20"});
    ok({"settings", "set", "TeojDuration", "500"});
    link_.connect(*device_);
  }

  void TearDown() override {
    device_.reset();
    std::filesystem::remove_all(home_ / "jobs");
  }

  SimulatorProcess& device() { return *device_; }

  std::string file(const std::string& name, const std::string& content) const {
    const std::filesystem::path path = home_ / name;
    std::ofstream(path, std::ios::binary) << content;
    return path.string();
  }

  // The data of a job as the device keeps it.
  std::string stored(int job) const {
    return contentOf(home_ / "jobs" / ("job-" + std::to_string(job) + ".prn"));
  }

 private:
  std::filesystem::path home_;
  DeviceLink link_;
  std::unique_ptr<SimulatorProcess> device_;
};

}  // namespace qvn::test
