#include "page/page_renderer.h"

#include <algorithm>

namespace sim {
namespace {

// The column or row of a picture where a dot lies that is the `index`th from an edge. Each division rounds
// down.
std::uint32_t placeOf(std::uint32_t index, std::uint32_t edge, std::uint32_t dpi, std::uint32_t places,
                      std::uint32_t glass) {
  const std::uint64_t units = edge + std::uint64_t{index} * kUnitsPerInch / dpi;
  return static_cast<std::uint32_t>(units * places / glass);
}

std::uint8_t grayOf(const std::uint8_t* pixel) {
  return static_cast<std::uint8_t>((299u * pixel[0] + 587u * pixel[1] + 114u * pixel[2] + 500u) / 1000u);
}

}  // namespace

PageRenderer::PageRenderer(Picture& picture, const ScanSettings& settings)
    : picture_(picture), settings_(settings), offsets_(settings.dots()), line_(settings.bytesPerLine()) {
  for (std::uint32_t dot = 0; dot < offsets_.size(); ++dot) {
    offsets_[dot] =
        std::size_t{3} * placeOf(dot, settings.left, settings.dpi, picture.columns(), kGlassWidth);
    isStraight_ = isStraight_ && offsets_[dot] == offsets_[0] + std::size_t{3} * dot;
  }
}

ByteView PageRenderer::nextLine() {
  const std::uint32_t row = placeOf(next_++, settings_.top, settings_.dpi, picture_.rows(), kGlassHeight);
  if (rendered_ != row) render(picture_.row(row));
  rendered_ = row;
  return line_;
}

void PageRenderer::render(const std::uint8_t* row) {
  switch (settings_.format) {
    case ColorFormat::BlackAndWhite:
      std::fill(line_.begin(), line_.end(), std::uint8_t{0});
      for (std::size_t dot = 0; dot < offsets_.size(); ++dot) {
        const unsigned black = grayOf(row + offsets_[dot]) < 128 ? 0x80 : 0;
        line_[dot / 8] = static_cast<std::uint8_t>(line_[dot / 8] | black >> dot % 8);
      }
      break;
    case ColorFormat::Gray:
      for (std::size_t dot = 0; dot < offsets_.size(); ++dot) line_[dot] = grayOf(row + offsets_[dot]);
      break;
    case ColorFormat::Color:
      if (isStraight_) {
        std::copy_n(row + offsets_[0], line_.size(), line_.begin());
        break;
      }
      for (std::size_t dot = 0; dot < offsets_.size(); ++dot) {
        std::copy_n(row + offsets_[dot], 3, line_.begin() + static_cast<std::ptrdiff_t>(3 * dot));
      }
      break;
  }
}

}  // namespace sim
