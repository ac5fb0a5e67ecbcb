// A page as a PNG file.
#pragma once

#include <png.h>

#include <cstdint>

#include "scan/output_file.h"
#include "shared/scan/settings.h"

namespace qvn::cli {

class PngPage {
 public:
  // Throws Failure, as do the others, when the file takes no more.
  PngPage(OutputFile& file, const scan::Settings& settings);
  ~PngPage();
  PngPage(const PngPage&) = delete;
  PngPage& operator=(const PngPage&) = delete;

  // One line, as the scanner sends it.
  void writeRow(const std::uint8_t* row);
  void finish();

 private:
  OutputFile& file_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};

}  // namespace qvn::cli
