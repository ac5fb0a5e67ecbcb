#include "page/page_store.h"

#include <utility>

#include "base/numbered_files.h"

namespace sim {

PageStore::PageStore(std::filesystem::path directory) : directory_(std::move(directory)) {
  if (directory_.empty()) return;
  std::filesystem::create_directories(directory_);
  highestFound_ = highestNumber(directory_, "page-");
}

void PageStore::open(std::uint64_t number, const ScanSettings& settings) {
  if (directory_.empty()) return;
  file_ = directory_ / ("page-" + std::to_string(highestFound_ + number) + ".png");
  unfinished_ = file_;
  unfinished_ += ".part";
  writer_.emplace(unfinished_, settings);
}

void PageStore::write(ByteView line) {
  if (writer_) writer_->write(line);
}

std::string PageStore::close() {
  if (!writer_) return {};
  const bool isComplete = writer_->close();
  std::error_code renamed;
  if (isComplete) std::filesystem::rename(unfinished_, file_, renamed);
  if (isComplete && !renamed) {
    writer_.reset();
    return {};
  }
  discard();
  return file_.string() + ": the page could not be stored";
}

void PageStore::discard() {
  if (!writer_) return;
  writer_.reset();
  std::error_code ignored;
  std::filesystem::remove(unfinished_, ignored);
}

}  // namespace sim
