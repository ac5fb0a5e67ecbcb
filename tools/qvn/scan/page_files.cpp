#include "scan/page_files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <optional>

#include "scan/output_file.h"
#include "scan/png_page.h"
#include "scan/tiff_pages.h"

namespace qvn::cli {

namespace {

namespace fs = std::filesystem;

std::string extensionOf(const std::string& name) {
  std::string extension = fs::path(name).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

bool isTiff(const std::string& name) {
  const std::string extension = extensionOf(name);
  return extension == ".tif" || extension == ".tiff";
}

class PngFiles : public PageFiles {
 public:
  PngFiles(const std::string& name, bool several) : name_(name), several_(several) { openNext(); }

  void beginPage(const scan::Settings& settings) override {
    if (!file_) openNext();
    page_.emplace(*file_, settings);
  }
  void writeRow(std::uint8_t* row) override { page_->writeRow(row); }
  std::string endPage() override {
    page_->finish();
    page_.reset();
    file_->keep();
    std::string name = file_->name();
    file_.reset();
    return name;
  }
  bool eachPageIsAFile() const override { return true; }
  void keep() override {}

 private:
  void openNext() {
    ++number_;
    fs::path path = name_;
    if (several_) {
      path.replace_filename(path.stem().string() + "-" + std::to_string(number_) + path.extension().string());
    }
    file_.emplace(path.string());
  }

  std::string name_;
  bool several_;
  unsigned number_ = 0;
  std::optional<OutputFile> file_;
  std::optional<PngPage> page_;  // writes to file_
};

class TiffFile : public PageFiles {
 public:
  explicit TiffFile(const std::string& name) : file_(name), pages_(file_) {}

  void beginPage(const scan::Settings& settings) override { pages_.beginPage(settings); }
  void writeRow(std::uint8_t* row) override { pages_.writeRow(row); }
  std::string endPage() override {
    pages_.endPage();
    return file_.name();
  }
  bool eachPageIsAFile() const override { return false; }
  void keep() override {
    pages_.finish();
    file_.keep();
  }

 private:
  OutputFile file_;
  TiffPages pages_;
};

}  // namespace

bool isPageFileName(const std::string& name) {
  return name == "-" || extensionOf(name) == ".png" || isTiff(name);
}

std::unique_ptr<PageFiles> makePageFiles(const std::string& name, bool several) {
  if (isTiff(name)) return std::make_unique<TiffFile>(name);
  return std::make_unique<PngFiles>(name, several);
}

}  // namespace qvn::cli
