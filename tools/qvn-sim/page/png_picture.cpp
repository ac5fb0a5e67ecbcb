#include "page/png_picture.h"

#include <png.h>

#include <stdexcept>

namespace sim {
namespace {

// A colour page of 1200 dpi is half of that.
constexpr std::uint64_t kLargestPicture = std::uint64_t{1} << 30;

}  // namespace

PngPicture::PngPicture(const std::filesystem::path& file) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  const auto fail = [&](const char* why) {
    png_image_free(&image);
    throw std::runtime_error(file.string() + ": " + why);
  };
  if (png_image_begin_read_from_file(&image, file.c_str()) == 0) fail(image.message);
  if (std::uint64_t{image.width} * image.height * 3 > kLargestPicture) fail("the picture is too large");
  image.format = PNG_FORMAT_RGB;
  pixels_.resize(std::size_t{3} * image.width * image.height);
  const png_color white = {255, 255, 255};
  if (png_image_finish_read(&image, &white, pixels_.data(), 0, nullptr) == 0) fail(image.message);
  columns_ = image.width;
  rows_ = image.height;
}

}  // namespace sim
