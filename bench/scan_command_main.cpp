// A page from the scanner into a PNG file by the command line, against libpng alone writing the same dots.
// Prints the row and adds it to the file that the argument names.
#include <png.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "installation.h"
#include "measure.h"
#include "qvn/qvn.h"
#include "ratio_table.h"
#include "support/process/child.h"
#include "support/simulator/simulator_process.h"

namespace qvn::bench {
namespace {

struct Picture {
  png_uint_32 width = 0;
  png_uint_32 height = 0;
  std::vector<std::uint8_t> dots;  // red, green, blue
};

[[noreturn]] void fail(const std::string& what) { throw std::runtime_error(what); }

Picture readPicture(const std::string& file) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, file.c_str()) == 0) fail(file + ": " + image.message);
  image.format = PNG_FORMAT_RGB;
  Picture picture{image.width, image.height, std::vector<std::uint8_t>(PNG_IMAGE_SIZE(image))};
  if (png_image_finish_read(&image, nullptr, picture.dots.data(), 0, nullptr) == 0) {
    fail(file + ": " + image.message);
  }
  return picture;
}

void writePicture(const std::string& file, const Picture& picture) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> out(std::fopen(file.c_str(), "wb"), &std::fclose);
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png == nullptr ? nullptr : png_create_info_struct(png);
  if (out == nullptr || info == nullptr) fail("cannot write " + file);
  if (setjmp(png_jmpbuf(png)) != 0) fail("libpng failed");
  png_init_io(png, out.get());
  png_set_IHDR(png, info, picture.width, picture.height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  const std::size_t line = std::size_t{picture.width} * 3;
  for (std::size_t at = 0; at < picture.dots.size(); at += line) png_write_row(png, &picture.dots[at]);
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
}

void run(const char* file) {
  const test::SimulatorProcess device({"--quit-on-eof"});
  const Installation installation;
  const std::string place = device.address() + ":" + std::to_string(device.discoveryPort());
  require(QvnDiscovery(installation.client(), "IPv4", place.c_str()), "QvnDiscovery");
  const std::string page = (installation.home() / "page.png").string();
  const std::string copy = (installation.home() / "copy.png").string();

  const auto scan = [&] {
    return timeOf([&] {
      const test::Result result =
          test::run({QVN_COMMAND, "scan", "--dpi", "600", "--mode", "color", "-o", page});
      if (result.exitCode != 0) fail("qvn scan: " + result.errors);
    });
  };
  scan();
  const Picture picture = readPicture(page);
  RatioTable table;
  table.atMost("scan: qvn scan of a colour page at 600 dpi to PNG / libpng alone",
               "a page is in its file when it could at best be", 1.1,
               medianRatio(scan, [&] { return timeOf([&] { writePicture(copy, picture); }); }));
  table.print();
  table.appendTo(file);
}

}  // namespace
}  // namespace qvn::bench

int main(int argc, char** argv) { return qvn::bench::benchMain(argc, argv, qvn::bench::run); }
