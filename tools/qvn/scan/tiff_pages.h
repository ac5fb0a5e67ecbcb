// Pages in one TIFF file. Black and white is compressed as fax group 4, gray and color with deflate.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <string>

#include "scan/output_file.h"
#include "shared/scan/settings.h"

namespace qvn::cli {

class TiffPages {
 public:
  // Throws Failure, as do the others, when the file takes no more or is none that can be read back.
  explicit TiffPages(OutputFile& file);
  ~TiffPages();
  TiffPages(const TiffPages&) = delete;
  TiffPages& operator=(const TiffPages&) = delete;

  void beginPage(const scan::Settings& settings);
  // One line, as the scanner sends it; its bytes are changed.
  void writeRow(std::uint8_t* row);
  void endPage();
  // No page comes any more.
  void finish();

 private:
  static int onError(TIFF*, void* self, const char* module, const char* format, va_list arguments);
  void require(bool written) const;

  OutputFile& file_;
  TIFF* tiff_ = nullptr;
  std::uint16_t page_ = 0;
  std::uint32_t row_ = 0;
  bool failed_ = false;
  int error_ = 0;  // errno of the first failure
};

}  // namespace qvn::cli
