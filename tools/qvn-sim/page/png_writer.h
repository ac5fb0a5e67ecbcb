// Writes one page as a PNG file, line by line.
#pragma once

#include <png.h>

#include <cstdio>
#include <filesystem>

#include "base/bytes.h"
#include "page/scan_settings.h"

namespace sim {

class PngWriter {
 public:
  PngWriter(const std::filesystem::path& file, const ScanSettings& settings);
  ~PngWriter();
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;

  void write(ByteView line);
  // Whether the file has it all. Nothing can be written any more.
  bool close();

 private:
  void writeHeader(const ScanSettings& settings);

  std::FILE* file_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  bool failed_ = true;
};

}  // namespace sim
