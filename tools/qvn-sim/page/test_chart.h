// The picture that lies on the glass unless there is another: grey and colour ramps, colour patches, lines of
// all widths, a border, and at the left the number of each row in binary, so that no two rows are the same.
// It has detail at every resolution: a column and a row for each 1/1200 inch.
#pragma once

#include "base/bytes.h"
#include "page/picture.h"
#include "page/scan_settings.h"

namespace sim {

class TestChart : public Picture {
 public:
  TestChart();

  std::uint32_t columns() const override { return kGlassWidth; }
  std::uint32_t rows() const override { return kGlassHeight; }
  const std::uint8_t* row(std::uint32_t index) override;

 private:
  enum class Band : std::uint8_t {
    GreyRamp,
    Patches,
    UprightLines,
    ColorRamps,
    LevelLines,
    Diagonals,
    Border,
    None
  };

  static Band bandOf(std::uint32_t row);
  void draw(Band band, std::uint32_t row);
  void drawSides();
  void drawNumber(std::uint32_t row);
  void fill(std::uint32_t from, std::uint32_t to, std::uint8_t red, std::uint8_t green, std::uint8_t blue);

  Band drawn_ = Band::None;
  Bytes row_;
  Bytes diagonals_;  // wider than a row by one period
};

}  // namespace sim
