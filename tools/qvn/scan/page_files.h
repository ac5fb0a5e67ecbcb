// Where scanned pages go: a PNG file for each, or one TIFF file for all.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "shared/scan/settings.h"

namespace qvn::cli {

class PageFiles {
 public:
  virtual ~PageFiles() = default;

  virtual void beginPage(const scan::Settings& settings) = 0;
  // One line, as the scanner sends it; its bytes may be changed.
  virtual void writeRow(std::uint8_t* row) = 0;
  // Gives the name of the page's file.
  virtual std::string endPage() = 0;
  // Whether a page's file is in place at the page's end; else it is after keep().
  virtual bool eachPageIsAFile() const = 0;
  // No page comes any more. Pages of a file that is not kept are lost.
  virtual void keep() = 0;
};

// Whether the name's extension, in any case, is one that pages can be written as; "-" is standard output.
bool isPageFileName(const std::string& name);

// The extension chooses the format; standard output takes PNG. `several`: each PNG file gets its page's
// number, page.png becoming page-1.png. Throws Failure when the (first) file cannot be written.
std::unique_ptr<PageFiles> makePageFiles(const std::string& name, bool several);

}  // namespace qvn::cli
