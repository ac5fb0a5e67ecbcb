// What a file holds.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace qvn::test {

// Empty when there is no such file.
inline std::string contentOf(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace qvn::test
