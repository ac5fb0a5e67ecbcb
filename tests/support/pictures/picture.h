// Pictures as tests compare them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace qvn::test {

struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> rgb;  // 3 bytes a dot, whatever the file has

  bool operator==(const Picture&) const = default;
};

// Something that no two lines or columns have alike.
Picture noise(std::uint32_t width, std::uint32_t height);

void writePng(const std::filesystem::path& file, const Picture& picture);

// These throw std::runtime_error for a file that is not whole.
Picture readPng(const std::filesystem::path& file);
std::vector<Picture> readTiff(const std::filesystem::path& file);

}  // namespace qvn::test

// Two pictures that differ are too much to print.
#define EXPECT_SAME_PICTURE(one, other) EXPECT_TRUE((one) == (other)) << #one " and " #other " differ"
