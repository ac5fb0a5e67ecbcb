#include "scan/tiff_pages.h"

#include <unistd.h>

#include <cerrno>
#include <memory>
#include <utility>

namespace qvn::cli {

TiffPages::TiffPages(OutputFile& file) : file_(file) {
  if (!file.seekable()) file.fail(ESPIPE);
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                 TIFFOpenOptionsFree);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, this);
  errno = 0;
  // Closing the TIFF closes its descriptor.
  const int descriptor = dup(fileno(file.stream()));
  tiff_ = TIFFFdOpenExt(descriptor, file.name().c_str(), "w", options.get());
  if (tiff_ == nullptr) {
    const int error = errno;
    close(descriptor);
    file.fail(error);
  }
}

TiffPages::~TiffPages() {
  if (tiff_ != nullptr) TIFFClose(tiff_);
}

int TiffPages::onError(TIFF*, void* self, const char*, const char*, va_list) {
  auto& pages = *static_cast<TiffPages*>(self);
  if (!std::exchange(pages.failed_, true)) pages.error_ = errno;
  return 1;
}

void TiffPages::require(bool written) const {
  if (!written || failed_) file_.fail(error_ != 0 ? error_ : EIO);
}

void TiffPages::beginPage(const scan::Settings& settings) {
  const scan::PageSize size = scan::pageSize(settings);
  const bool bilevel = settings.mode == scan::ColorMode::BlackAndWhite;
  const bool color = settings.mode == scan::ColorMode::Color;
  const auto photometric = bilevel ? PHOTOMETRIC_MINISWHITE
                           : color ? PHOTOMETRIC_RGB
                                   : PHOTOMETRIC_MINISBLACK;
  errno = 0;
  TIFFSetField(tiff_, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
  TIFFSetField(tiff_, TIFFTAG_PAGENUMBER, page_, 0);  // of how many is not known
  TIFFSetField(tiff_, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(size.dots));
  TIFFSetField(tiff_, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(size.lines));
  TIFFSetField(tiff_, TIFFTAG_BITSPERSAMPLE, bilevel ? 1 : 8);
  TIFFSetField(tiff_, TIFFTAG_SAMPLESPERPIXEL, color ? 3 : 1);
  TIFFSetField(tiff_, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff_, TIFFTAG_PHOTOMETRIC, photometric);
  TIFFSetField(tiff_, TIFFTAG_COMPRESSION, bilevel ? COMPRESSION_CCITTFAX4 : COMPRESSION_ADOBE_DEFLATE);
  if (!bilevel) TIFFSetField(tiff_, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
  TIFFSetField(tiff_, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff_, 0));
  TIFFSetField(tiff_, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  TIFFSetField(tiff_, TIFFTAG_XRESOLUTION, static_cast<double>(settings.dpi));
  TIFFSetField(tiff_, TIFFTAG_YRESOLUTION, static_cast<double>(settings.dpi));
  TIFFSetField(tiff_, TIFFTAG_SOFTWARE, "qvn");
  require(true);
  row_ = 0;
}

void TiffPages::writeRow(std::uint8_t* row) {
  errno = 0;
  require(TIFFWriteScanline(tiff_, row, row_++, 0) == 1);
}

void TiffPages::endPage() {
  errno = 0;
  require(TIFFWriteDirectory(tiff_) == 1);
  ++page_;
}

void TiffPages::finish() {
  errno = 0;
  TIFFClose(std::exchange(tiff_, nullptr));
  require(true);
}

}  // namespace qvn::cli
