// What lies on the glass: rows of red, green and blue, stretched over the whole area.
#pragma once

#include <cstdint>

namespace sim {

class Picture {
 public:
  virtual ~Picture() = default;

  virtual std::uint32_t columns() const = 0;
  virtual std::uint32_t rows() const = 0;
  // Three bytes a column, top row first; valid until the next call.
  virtual const std::uint8_t* row(std::uint32_t index) = 0;
};

}  // namespace sim
