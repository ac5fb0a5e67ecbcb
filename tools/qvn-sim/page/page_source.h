// Where pages come from: the picture on the glass, sent in blocks and kept in the store.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "base/bytes.h"
#include "faults/fault_switches.h"
#include "page/page_sender.h"
#include "page/page_store.h"
#include "page/page_stream.h"
#include "page/picture.h"
#include "page/scan_settings.h"

namespace sim {

// One page is open at a time.
class PageSource {
 public:
  // `blockSize` is the longest payload of a scan data block.
  PageSource(Picture& picture, PageStore& store, FaultSwitches& faults, std::size_t blockSize)
      : picture_(picture), store_(store), faults_(faults), blockSize_(blockSize) {}

  // The device's `number`th page. `onBlock` gets each block's header when it is sent.
  PageSender open(std::uint64_t number, const ScanSettings& settings, BlockFormat format,
                  std::function<void(ByteView header)> onBlock);
  // The page is over: kept when it was sent to its end.
  void close(const PageSender& page);
  // The page cannot be sent any more.
  void discard() { store_.discard(); }

 private:
  Picture& picture_;
  PageStore& store_;
  FaultSwitches& faults_;
  const std::size_t blockSize_;
};

}  // namespace sim
