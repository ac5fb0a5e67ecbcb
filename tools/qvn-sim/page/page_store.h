// Keeps the pages that were sent as page-<n>.png; a page appears at once and complete.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "page/png_writer.h"
#include "page/scan_settings.h"

namespace sim {

// One page is open at a time.
class PageStore {
 public:
  // Without a directory nothing is kept. Numbers go on from the highest that the directory holds.
  explicit PageStore(std::filesystem::path directory);
  ~PageStore() { discard(); }
  PageStore(const PageStore&) = delete;
  PageStore& operator=(const PageStore&) = delete;

  // The device's `number`th page.
  void open(std::uint64_t number, const ScanSettings& settings);
  void write(ByteView line);
  // Keeps the open page; a sentence for the user when it could not be stored.
  std::string close();
  void discard();

 private:
  std::filesystem::path directory_;
  std::uint64_t highestFound_ = 0;
  std::filesystem::path file_;
  std::filesystem::path unfinished_;
  std::optional<PngWriter> writer_;
};

}  // namespace sim
