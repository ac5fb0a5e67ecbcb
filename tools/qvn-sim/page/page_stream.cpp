#include "page/page_stream.h"

#include <algorithm>
#include <utility>

namespace sim {
namespace {

// So much is rendered at a time: few calls, and it stays in the processor's cache.
constexpr std::size_t kBatch = std::size_t{256} << 10;

}  // namespace

PageStream::PageStream(Picture& picture, const ScanSettings& settings, std::size_t blockSize,
                       BlockFormat format, PageSinks sinks)
    : renderer_(picture, settings),
      blockSize_(blockSize),
      format_(std::move(format)),
      blockLength_(format_.headerLength + blockSize),
      payload_(std::uint64_t{settings.lines()} * settings.bytesPerLine()),
      sinks_(std::move(sinks)) {
  batch_.reserve(kBatch);
}

void PageStream::promiseTooMuch(std::uint64_t block, std::size_t excess) {
  promisingBlock_ = block;
  excess_ = excess;
}

ByteView PageStream::pending() {
  if (offset_ == batch_.size()) renderBatch();
  return ByteView(batch_).subspan(offset_);
}

void PageStream::renderBatch() {
  const std::size_t blocks = std::max<std::size_t>(1, kBatch / blockLength_);
  const std::uint64_t payload = std::min<std::uint64_t>(payload_ - rendered_, blocks * blockSize_);
  batch_.resize(static_cast<std::size_t>(wholeBlocksFor(rendered_ + payload) - wholeBlocksFor(rendered_)));
  offset_ = 0;
  for (std::uint8_t* to = batch_.data(); to != batch_.data() + batch_.size(); ++block_) {
    std::size_t missing = static_cast<std::size_t>(std::min<std::uint64_t>(payload_ - rendered_, blockSize_));
    format_.writeHeader(to, missing + (block_ == promisingBlock_ ? excess_ : 0), block_);
    to += format_.headerLength;
    rendered_ += missing;
    while (missing > 0) {
      if (line_.empty()) {
        line_ = renderer_.nextLine();
        sinks_.onLine(line_);
      }
      const std::size_t taken = std::min(missing, line_.size());
      to = std::copy_n(line_.begin(), taken, to);
      line_ = line_.subspan(taken);
      missing -= taken;
    }
  }
}

void PageStream::sent(std::size_t count) {
  const std::size_t end = offset_ + count;
  // A batch begins with a block.
  for (std::size_t begin = (offset_ + blockLength_ - 1) / blockLength_ * blockLength_; begin < end;
       begin += blockLength_) {
    sinks_.onBlock(ByteView(batch_).subspan(begin, format_.headerLength));
  }
  offset_ = end;
  sent_ += count;
}

void PageStream::endAfterBlock() {
  rendered_ = payload_;
  const std::size_t end = isBetweenBlocks() ? offset_ : (offset_ / blockLength_ + 1) * blockLength_;
  batch_.resize(std::min(batch_.size(), end));
}

std::uint64_t PageStream::bytesFor(std::uint64_t payload) const {
  return payload + (payload + blockSize_ - 1) / blockSize_ * format_.headerLength;
}

std::uint64_t PageStream::wholeBlocksFor(std::uint64_t payload) const {
  const std::uint64_t blocks = (payload + blockSize_ - 1) / blockSize_;
  return bytesFor(std::min(payload_, blocks * blockSize_));
}

}  // namespace sim
