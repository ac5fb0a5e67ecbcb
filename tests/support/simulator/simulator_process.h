// A simulated device in a child process, ended by its id and reaped with this object.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/process/child.h"

namespace qvn::test {

class SimulatorProcess {
 public:
  // Returns once the device is ready. Throws std::runtime_error when it does not start. `endsWithTest`: it
  // also ends when this process does, however that ends.
  explicit SimulatorProcess(std::vector<std::string> arguments = {}, bool endsWithTest = true);
  ~SimulatorProcess();
  SimulatorProcess(const SimulatorProcess&) = delete;
  SimulatorProcess& operator=(const SimulatorProcess&) = delete;

  pid_t pid() const { return child_.id(); }
  std::string address() const { return ready_.at("address"); }
  std::uint16_t discoveryPort() const { return ready_.at("discovery"); }
  std::uint16_t bidiPort() const { return ready_.at("bidi"); }
  std::uint16_t printPort() const { return ready_.at("print"); }
  std::uint16_t scanPort() const { return ready_.at("scan"); }
  std::uint16_t hidPort() const { return ready_.at("hid"); }
  // As a search text names it.
  std::string place() const { return address() + ":" + std::to_string(discoveryPort()); }
  const nlohmann::json& readyLine() const { return ready_; }

  // Has the device carry out one line of its standard input and gives its answer.
  nlohmann::json command(const std::string& line);
  // The same, of what it must accept: throws std::runtime_error when it does not.
  void order(const std::string& line);
  // The next line the device prints; throws std::runtime_error when none comes.
  nlohmann::json nextLine();
  // The record of the next job that ends; the device needs "--events".
  nlohmann::json nextJob() { return nextLine().at("job"); }

  void closeInput() { child_.closeInput(); }
  void signal(int number) { child_.signal(number); }
  // Waits for its end and gives its exit code.
  int wait() { return child_.wait(); }

 private:
  Child child_;
  nlohmann::json ready_;
};

// Runs the simulator with arguments that make it end by itself; gives its exit code.
int runSimulator(const std::vector<std::string>& arguments);

}  // namespace qvn::test
