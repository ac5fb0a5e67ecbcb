#include "page/page_source.h"

#include <iostream>
#include <string>
#include <utility>

namespace sim {

PageSender PageSource::open(std::uint64_t number, const ScanSettings& settings, BlockFormat format,
                            std::function<void(ByteView)> onBlock) {
  store_.open(number, settings);
  return PageSender(PageStream(picture_, settings, blockSize_, std::move(format),
                               {[this](ByteView line) { store_.write(line); }, std::move(onBlock)}),
                    faults_);
}

void PageSource::close(const PageSender& page) {
  if (!page.isWhole()) {
    store_.discard();
    return;
  }
  const std::string error = store_.close();
  if (!error.empty()) std::cerr << "qvn-sim: " << error << '\n';
}

}  // namespace sim
