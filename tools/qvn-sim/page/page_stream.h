// The scan data blocks of one page, rendered as they are sent. Bytes are counted with the headers of the
// blocks unless a name says payload.
#pragma once

#include <cstdint>
#include <functional>

#include "base/bytes.h"
#include "page/page_renderer.h"
#include "page/picture.h"
#include "page/scan_settings.h"

namespace sim {

// How a family's device heads its scan data blocks.
struct BlockFormat {
  std::size_t headerLength;
  // Writes the header of the block of that number, counted from 0 on. `promised` is the length of its
  // payload, or a greater one by a fault.
  std::function<void(std::uint8_t* to, std::size_t promised, std::uint64_t block)> writeHeader;
};

struct PageSinks {
  std::function<void(ByteView line)> onLine;     // each line, when it is rendered
  std::function<void(ByteView header)> onBlock;  // each block's header, when it is sent
};

class PageStream {
 public:
  // A block's payload has at most `blockSize` bytes.
  PageStream(Picture& picture, const ScanSettings& settings, std::size_t blockSize, BlockFormat format,
             PageSinks sinks);

  // The block of that number promises `excess` bytes more than it has. For a block not rendered yet.
  void promiseTooMuch(std::uint64_t block, std::size_t excess);

  // What can be sent next; empty when the page is over. Valid until the next call.
  ByteView pending();
  // So many bytes of it were sent.
  void sent(std::size_t count);

  bool isBetweenBlocks() const { return sent_ % blockLength_ == 0 || offset_ == batch_.size(); }
  // Nothing comes any more after the block that has begun.
  void endAfterBlock();

  std::uint64_t sentBytes() const { return sent_; }
  // How many bytes bring so much payload, and how many bring it in whole blocks.
  std::uint64_t bytesFor(std::uint64_t payload) const;
  std::uint64_t wholeBlocksFor(std::uint64_t payload) const;
  std::uint64_t bytesForBlocks(std::uint64_t blocks) const { return wholeBlocksFor(blocks * blockSize_); }

 private:
  void renderBatch();

  PageRenderer renderer_;
  const std::size_t blockSize_;
  const BlockFormat format_;
  const std::size_t blockLength_;
  const std::uint64_t payload_;
  const PageSinks sinks_;
  std::uint64_t block_ = 0;     // the next to render
  std::uint64_t rendered_ = 0;  // payload
  ByteView line_;               // what is left of the line rendered last
  std::uint64_t promisingBlock_ = 0;
  std::size_t excess_ = 0;
  Bytes batch_;             // whole blocks
  std::size_t offset_ = 0;  // in it
  std::uint64_t sent_ = 0;
};

}  // namespace sim
