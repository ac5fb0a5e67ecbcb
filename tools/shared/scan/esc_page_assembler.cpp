#include "shared/scan/esc_page_assembler.h"

#include "shared/scan/error.h"

namespace qvn::scan {

Bytes EscPageAssembler::take(Bytes command) {
  if (isStatus(command)) {
    requireGood(command, "the page");
    if (taken_ != expected_) {
      throw Error(Problem::BadAnswer, "the scanner ended the page after " + std::to_string(taken_) + " of " +
                                          std::to_string(expected_) + " bytes");
    }
    complete_ = true;
    return {};
  }
  const DataBlock block = dataBlock(command);
  if (block.page != page_.value_or(block.page)) {
    throw Error(Problem::BadAnswer, "the scanner sent a block of another page");
  }
  page_ = block.page;
  if (block.number != nextBlock_) {
    throw Error(Problem::BadAnswer, "the scanner sent block " + std::to_string(block.number) +
                                        " of the page instead of block " + std::to_string(nextBlock_));
  }
  ++nextBlock_;
  if (block.payload.size() > expected_ - taken_) {
    throw Error(Problem::BadAnswer,
                "the scanner sent more than the " + std::to_string(expected_) + " bytes of the page");
  }
  taken_ += block.payload.size();
  return block.payload;
}

}  // namespace qvn::scan
