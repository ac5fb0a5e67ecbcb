#include "support/simulator/simulator_process.h"

#include <signal.h>

#include <iostream>
#include <optional>
#include <stdexcept>
#include <utility>

namespace qvn::test {
namespace {

std::vector<std::string> commandOf(std::vector<std::string> arguments, bool endsWithTest = false) {
  arguments.insert(arguments.begin(), QVN_SIM_PATH);
  if (endsWithTest) arguments.emplace_back("--quit-on-eof");
  return arguments;
}

}  // namespace

SimulatorProcess::SimulatorProcess(std::vector<std::string> arguments, bool endsWithTest)
    : child_(commandOf(std::move(arguments), endsWithTest)), ready_(nextLine()) {}

SimulatorProcess::~SimulatorProcess() {
  child_.signal(SIGTERM);
  child_.wait();
  std::cerr << child_.errors();
}

nlohmann::json SimulatorProcess::command(const std::string& line) {
  child_.write(line + "\n");
  return nextLine();
}

void SimulatorProcess::order(const std::string& line) {
  const nlohmann::json answer = command(line);
  if (answer != nlohmann::json({{"ok", true}})) throw std::runtime_error(line + ": " + answer.dump());
}

nlohmann::json SimulatorProcess::nextLine() {
  const std::optional<std::string> line = child_.readLine();
  if (!line) throw std::runtime_error("the simulator says nothing: " + child_.errors());
  return nlohmann::json::parse(*line);
}

int runSimulator(const std::vector<std::string>& arguments) { return run(commandOf(arguments)).exitCode; }

}  // namespace qvn::test
