#include "scan/png_page.h"

#include <cerrno>
#include <cmath>
#include <new>

namespace qvn::cli {

namespace {

constexpr double kMetresPerInch = 0.0254;

// libpng would print its own message before it jumps back.
void onError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void onWarning(png_structp, png_const_charp) {}

}  // namespace

PngPage::PngPage(OutputFile& file, const scan::Settings& settings) : file_(file) {
  png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning);
  info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
  if (info_ == nullptr) {
    png_destroy_write_struct(&png_, nullptr);
    throw std::bad_alloc();
  }
  const scan::PageSize size = scan::pageSize(settings);
  const bool bilevel = settings.mode == scan::ColorMode::BlackAndWhite;
  const auto dotsPerMetre = static_cast<png_uint_32>(std::lround(settings.dpi / kMetresPerInch));
  errno = 0;
  if (setjmp(png_jmpbuf(png_)) != 0) {
    const int error = errno;
    png_destroy_write_struct(&png_, &info_);
    file_.fail(error);
  }
  png_init_io(png_, file_.stream());
  png_set_IHDR(png_, info_, static_cast<png_uint_32>(size.dots), static_cast<png_uint_32>(size.lines),
               bilevel ? 1 : 8,
               settings.mode == scan::ColorMode::Color ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_pHYs(png_, info_, dotsPerMetre, dotsPerMetre, PNG_RESOLUTION_METER);
  png_write_info(png_, info_);
  // PNG has 1 for white.
  if (bilevel) png_set_invert_mono(png_);
}

PngPage::~PngPage() { png_destroy_write_struct(&png_, &info_); }

void PngPage::writeRow(const std::uint8_t* row) {
  errno = 0;
  if (setjmp(png_jmpbuf(png_)) != 0) file_.fail(errno);
  png_write_row(png_, row);
}

void PngPage::finish() {
  errno = 0;
  if (setjmp(png_jmpbuf(png_)) != 0) file_.fail(errno);
  png_write_end(png_, info_);
}

}  // namespace qvn::cli
