// How a suite's machine reaches its simulated device: over TCP, or on a USB bus of its own. A suite links one
// of both.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/simulator/simulator_process.h"

namespace qvn::test {

class DeviceLink {
 public:
  DeviceLink();
  ~DeviceLink();

  // Starts a device that can be reached over the link.
  static std::unique_ptr<SimulatorProcess> start(std::vector<std::string> arguments);

  // Adds the transport to an installation without any and has it find the device.
  void connect(const SimulatorProcess& device);

  // Whether programs can use one part of a device at the same time; else the later one finds it busy.
  static bool servesSeveralHosts();
  // The fault with which a printer that is still heard takes its data most slowly.
  static std::string slowestPrint();
  // The fault with which a job's connection breaks, once, after about so many bytes.
  static std::string breaksAfter(std::size_t bytes);

  // What the simulated device is called: the name of its port, and the handles of its parts.
  static std::string portname(const std::string& serial = "SIM0000001");
  static std::string printerHandle();
  static std::string scannerHandle();

 private:
  struct Bus;
  std::unique_ptr<Bus> bus_;
};

}  // namespace qvn::test
