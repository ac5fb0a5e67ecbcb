// Where a reader receives what a device sends, and takes it from: nothing is copied but the beginning of
// something whose rest is still to come.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>

namespace qvn::shared {

class ReceiveBuffer {
 public:
  // The room for what comes next. Views of what came before end here.
  std::span<std::uint8_t> room() {
    std::memmove(storage_.get(), storage_.get() + start_, end_ - start_);
    end_ -= start_;
    start_ = 0;
    return std::span(storage_.get(), kSize).subspan(end_);
  }

  // So many bytes have been received into the room.
  void add(std::size_t count) { end_ += count; }

  // What has begun and waits for its rest, after next() has given all that is complete.
  bool isPartial() const { return start_ != end_; }

 protected:
  std::span<const std::uint8_t> bytes() const { return {storage_.get() + start_, end_ - start_}; }

  void drop(std::size_t count) { start_ += count; }

 private:
  // Many blocks of a page in one read, and never full with one thing: the longest is little over 128 KiB.
  static constexpr std::size_t kSize = std::size_t{256} << 10;

  // Not filled with zeros: of a device that sends little, little memory is used.
  std::unique_ptr<std::uint8_t[]> storage_ = std::make_unique_for_overwrite<std::uint8_t[]>(kSize);
  std::size_t start_ = 0;
  std::size_t end_ = 0;
};

}  // namespace qvn::shared
