#include "support/pictures/picture.h"

#include <png.h>
#include <tiffio.h>

#include <memory>
#include <random>
#include <stdexcept>

namespace qvn::test {

Picture noise(std::uint32_t width, std::uint32_t height) {
  Picture picture{width, height, std::vector<std::uint8_t>(std::size_t{3} * width * height)};
  std::mt19937 random(1);
  for (std::uint8_t& byte : picture.rgb) byte = static_cast<std::uint8_t>(random());
  return picture;
}

void writePng(const std::filesystem::path& file, const Picture& picture) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  image.width = picture.width;
  image.height = picture.height;
  image.format = PNG_FORMAT_RGB;
  if (png_image_write_to_file(&image, file.c_str(), 0, picture.rgb.data(), 0, nullptr) == 0) {
    throw std::runtime_error("cannot write " + file.string());
  }
}

Picture readPng(const std::filesystem::path& file) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, file.c_str()) == 0) {
    throw std::runtime_error("no picture in " + file.string());
  }
  image.format = PNG_FORMAT_RGB;
  Picture picture{image.width, image.height, std::vector<std::uint8_t>(PNG_IMAGE_SIZE(image))};
  if (png_image_finish_read(&image, nullptr, picture.rgb.data(), 0, nullptr) == 0) {
    throw std::runtime_error("half a picture in " + file.string());
  }
  return picture;
}

std::vector<Picture> readTiff(const std::filesystem::path& file) {
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(TIFFOpen(file.c_str(), "r"), TIFFClose);
  if (!tiff) throw std::runtime_error("no TIFF in " + file.string());
  std::vector<Picture> pages;
  do {
    Picture page;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &page.width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &page.height);
    std::vector<std::uint32_t> raster(std::size_t{page.width} * page.height);
    if (TIFFReadRGBAImageOriented(tiff.get(), page.width, page.height, raster.data(), ORIENTATION_TOPLEFT,
                                  1) == 0) {
      throw std::runtime_error("half a page in " + file.string());
    }
    for (const std::uint32_t dot : raster) {
      page.rgb.push_back(static_cast<std::uint8_t>(TIFFGetR(dot)));
      page.rgb.push_back(static_cast<std::uint8_t>(TIFFGetG(dot)));
      page.rgb.push_back(static_cast<std::uint8_t>(TIFFGetB(dot)));
    }
    pages.push_back(std::move(page));
  } while (TIFFReadDirectory(tiff.get()) == 1);
  return pages;
}

}  // namespace qvn::test
