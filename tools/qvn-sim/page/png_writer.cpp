#include "page/png_writer.h"

namespace sim {
namespace {

// Scans are kept while they are sent: speed counts for more than size.
constexpr int kCompression = 1;

constexpr std::uint32_t dotsPerMetre(std::uint32_t dpi) { return (dpi * 10000 + 127) / 254; }

void ignoreWarning(png_structp, png_const_charp) {}

}  // namespace

// libpng reports failures by jumping back to setjmp: no function that calls it has anything to destroy.

PngWriter::PngWriter(const std::filesystem::path& file, const ScanSettings& settings)
    : file_(std::fopen(file.c_str(), "wbe")) {
  if (file_ == nullptr) return;
  png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, ignoreWarning);
  if (png_ == nullptr) return;
  info_ = png_create_info_struct(png_);
  if (info_ != nullptr) writeHeader(settings);
}

PngWriter::~PngWriter() { close(); }

void PngWriter::writeHeader(const ScanSettings& settings) {
  if (setjmp(png_jmpbuf(png_))) return;
  const bool isBlackAndWhite = settings.format == ColorFormat::BlackAndWhite;
  png_init_io(png_, file_);
  png_set_compression_level(png_, kCompression);
  png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
  png_set_IHDR(png_, info_, settings.dots(), settings.lines(), isBlackAndWhite ? 1 : 8,
               settings.format == ColorFormat::Color ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_pHYs(png_, info_, dotsPerMetre(settings.dpi), dotsPerMetre(settings.dpi), PNG_RESOLUTION_METER);
  png_write_info(png_, info_);
  if (isBlackAndWhite) png_set_invert_mono(png_);  // 1 is black on the wire
  failed_ = false;
}

void PngWriter::write(ByteView line) {
  if (failed_) return;
  failed_ = true;
  if (setjmp(png_jmpbuf(png_))) return;
  png_write_row(png_, line.data());
  failed_ = false;
}

bool PngWriter::close() {
  if (!failed_) {
    failed_ = true;
    if (setjmp(png_jmpbuf(png_)) == 0) {
      png_write_end(png_, info_);
      failed_ = false;
    }
  }
  png_destroy_write_struct(&png_, &info_);
  if (file_ != nullptr && std::fclose(file_) != 0) failed_ = true;
  file_ = nullptr;
  const bool isComplete = !failed_;
  failed_ = true;
  return isComplete;
}

}  // namespace sim
