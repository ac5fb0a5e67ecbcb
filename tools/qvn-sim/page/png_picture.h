// A picture from a PNG file, kept as red, green and blue; transparent parts are white.
#pragma once

#include <filesystem>

#include "base/bytes.h"
#include "page/picture.h"

namespace sim {

class PngPicture : public Picture {
 public:
  // Throws std::runtime_error when the file holds no picture that fits into memory.
  explicit PngPicture(const std::filesystem::path& file);

  std::uint32_t columns() const override { return columns_; }
  std::uint32_t rows() const override { return rows_; }
  const std::uint8_t* row(std::uint32_t index) override { return pixels_.data() + index * stride(); }

 private:
  std::size_t stride() const { return std::size_t{3} * columns_; }

  std::uint32_t columns_ = 0;
  std::uint32_t rows_ = 0;
  Bytes pixels_;
};

}  // namespace sim
