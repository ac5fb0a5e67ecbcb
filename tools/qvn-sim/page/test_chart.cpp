#include "page/test_chart.h"

#include <algorithm>
#include <array>

namespace sim {
namespace {

constexpr std::uint32_t kBands = 6;
constexpr std::uint32_t kBandHeight = 1170;  // each band comes twice
constexpr std::uint32_t kBorder = 24;

// A cell of the row's number is wider than a dot of the lowest resolution.
constexpr std::uint32_t kNumberLeft = 48;
constexpr std::uint32_t kNumberBits = 14;
constexpr std::uint32_t kNumberCell = 24;

constexpr std::array<std::uint32_t, 6> kLineWidths = {1, 2, 4, 8, 16, 32};
constexpr std::uint32_t kLinesWidth = kGlassWidth / kLineWidths.size();

constexpr std::uint32_t kDiagonalPeriod = 64;

constexpr std::array<std::array<std::uint8_t, 3>, 12> kPatches = {{
    {0, 0, 0},
    {255, 0, 0},
    {0, 255, 0},
    {0, 0, 255},
    {0, 255, 255},
    {255, 0, 255},
    {255, 255, 0},
    {255, 255, 255},
    {128, 64, 32},
    {240, 200, 170},
    {64, 96, 128},
    {128, 128, 128},
}};

constexpr std::uint8_t blackIf(bool black) { return black ? 0 : 255; }

}  // namespace

TestChart::TestChart()
    : row_(std::size_t{3} * kGlassWidth), diagonals_(std::size_t{3} * (kGlassWidth + kDiagonalPeriod)) {
  for (std::size_t column = 0; column < kGlassWidth + kDiagonalPeriod; ++column) {
    std::fill_n(diagonals_.begin() + static_cast<std::ptrdiff_t>(3 * column), 3,
                static_cast<std::uint8_t>(column % kDiagonalPeriod * 4));
  }
}

const std::uint8_t* TestChart::row(std::uint32_t index) {
  const Band band = bandOf(index);
  if (band != drawn_ || band == Band::LevelLines || band == Band::Diagonals) draw(band, index);
  drawn_ = band;
  drawNumber(index);
  return row_.data();
}

TestChart::Band TestChart::bandOf(std::uint32_t row) {
  if (row < kBorder || row >= kGlassHeight - kBorder) return Band::Border;
  return static_cast<Band>(row / kBandHeight % kBands);
}

void TestChart::draw(Band band, std::uint32_t row) {
  switch (band) {
    case Band::GreyRamp:
      for (std::uint32_t column = 0; column < kGlassWidth; ++column) {
        const auto grey = static_cast<std::uint8_t>(column * 256 / kGlassWidth);
        fill(column, column + 1, grey, grey, grey);
      }
      break;
    case Band::Patches: {
      constexpr std::uint32_t kPatchWidth = kGlassWidth / kPatches.size();
      std::uint32_t left = 0;
      for (const auto& [red, green, blue] : kPatches) {
        fill(left, left + kPatchWidth, red, green, blue);
        left += kPatchWidth;
      }
      break;
    }
    case Band::UprightLines:
      for (std::uint32_t column = 0; column < kGlassWidth; ++column) {
        const std::uint8_t grey = blackIf(column / kLineWidths[column / kLinesWidth] % 2 == 0);
        fill(column, column + 1, grey, grey, grey);
      }
      break;
    case Band::ColorRamps: {
      constexpr std::uint32_t kRampWidth = kGlassWidth / 3;
      for (std::uint32_t column = 0; column < kRampWidth; ++column) {
        const auto value = static_cast<std::uint8_t>(column * 256 / kRampWidth);
        fill(column, column + 1, value, 0, 0);
        fill(kRampWidth + column, kRampWidth + column + 1, 0, value, 0);
        fill(2 * kRampWidth + column, 2 * kRampWidth + column + 1, 0, 0, value);
      }
      break;
    }
    case Band::LevelLines:
      for (std::uint32_t i = 0; i < kLineWidths.size(); ++i) {
        const std::uint8_t grey = blackIf(row / kLineWidths[i] % 2 == 0);
        fill(i * kLinesWidth, (i + 1) * kLinesWidth, grey, grey, grey);
      }
      break;
    case Band::Diagonals: {
      const auto from = diagonals_.begin() + static_cast<std::ptrdiff_t>(3 * (row % kDiagonalPeriod));
      std::copy_n(from, row_.size(), row_.begin());
      break;
    }
    case Band::Border:
    case Band::None:
      fill(0, kGlassWidth, 0, 0, 0);
      break;
  }
  drawSides();
}

void TestChart::drawSides() {
  fill(0, kBorder, 0, 0, 0);
  fill(kGlassWidth - kBorder, kGlassWidth, 0, 0, 0);
}

void TestChart::drawNumber(std::uint32_t row) {
  for (std::uint32_t bit = 0; bit < kNumberBits; ++bit) {
    const std::uint32_t left = kNumberLeft + bit * kNumberCell;
    const std::uint8_t grey = blackIf((row >> bit & 1) != 0);
    fill(left, left + kNumberCell, grey, grey, grey);
  }
}

void TestChart::fill(std::uint32_t from, std::uint32_t to, std::uint8_t red, std::uint8_t green,
                     std::uint8_t blue) {
  for (std::size_t i = std::size_t{3} * from; i < std::size_t{3} * to; i += 3) {
    row_[i] = red;
    row_[i + 1] = green;
    row_[i + 2] = blue;
  }
}

}  // namespace sim
