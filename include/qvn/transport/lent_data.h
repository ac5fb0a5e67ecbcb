// LentData: bytes that stay their owner's, as a Data for the time of one call. Large print data is handed
// down to the transport in place instead of being copied first.
#pragma once

#include <cstdint>

#include "qvn/transport/data.h"

namespace qvn {

// The bytes must outlive it, or its first change: what changes the content, or asks for a buffer to write to,
// copies it first, and the owner's bytes stay as they are. Taking bytes off the front and reading
// (getBuffer() of a const Data) copy nothing. A copy is an ordinary Data.
class LentData final : public Data {
 public:
  LentData(const std::uint8_t* bytes, std::uint32_t length) : bytes_(bytes), length_(length) {}
  LentData(const LentData&) = delete;
  LentData& operator=(const LentData&) = delete;
  using Data::operator=;

  std::uint32_t getLength() const override;
  std::uint8_t* getBuffer() override;
  void consume(std::uint32_t length, bool compact) override;
  std::uint8_t* append(const void* bytes, std::uint32_t length) override;
  std::uint8_t* append(const Data& other) override;
  void reset() override;
  bool fill(const void* bytes, std::uint32_t length) override;
  const std::uint8_t* getBuffer() const override;

 private:
  // Copies what is lent; from then on this is a Data like others.
  void own();

  const std::uint8_t* bytes_;  // null once the content is its own
  std::uint32_t length_;
};

}  // namespace qvn
