// Every exported function, callable on the devices of a stage with arguments that are right.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qvn::test {

// How many of them run inside one callback.
enum class Company {
  Together,  // leaves everything that the others need
  Alone,
  Global,  // alone, and it is about the library as a whole
};

struct ExportedCall {
  std::string name;
  Company company;
  std::vector<std::uint32_t> handles;  // the devices it is tried on; 0 for a function without
  std::vector<std::uint32_t> allowed;  // what it may answer inside a callback, with every device open
  std::uint32_t unknown;               // what it gives for a handle that no store holds
  std::vector<std::function<std::uint32_t()>> missing;  // with one required argument missing each
  std::function<std::uint32_t(std::uint32_t handle)> call;
};

const std::vector<ExportedCall>& exportedCalls();

}  // namespace qvn::test
