// Every exported function, callable on the devices of a stage with arguments that are right.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qvn::test {

// How many of them run inside one callback.
enum class Company {
  // It leaves everything that the others need, so they run one after the other.
  Together,
  Alone,
  // Alone, and it is about the library as a whole.
  Global,
};

struct ExportedCall {
  std::string name;
  Company company;
  // The devices it is tried on; 0 for a function without.
  std::vector<std::uint32_t> handles;
  // What it may answer inside a callback, with every device open.
  std::vector<std::uint32_t> allowed;
  std::uint32_t (*call)(std::uint32_t handle);
};

const std::vector<ExportedCall>& exportedCalls();

}  // namespace qvn::test
