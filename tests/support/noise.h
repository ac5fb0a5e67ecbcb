// Print data for tests.
#pragma once

#include <random>
#include <string>

namespace qvn::test {

// Bytes that no part of the way can guess or confuse with zeros that cancel a job.
inline std::string noise(std::size_t size) {
  std::mt19937 generator(7);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(generator() % 255 + 1);
  return bytes;
}

}  // namespace qvn::test
