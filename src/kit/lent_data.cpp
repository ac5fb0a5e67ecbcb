#include "qvn/transport/lent_data.h"

namespace qvn {

std::uint32_t LentData::getLength() const { return bytes_ != nullptr ? length_ : Data::getLength(); }

std::uint8_t* LentData::getBuffer() {
  own();
  return Data::getBuffer();
}

const std::uint8_t* LentData::getBuffer() const { return bytes_ != nullptr ? bytes_ : Data::getBuffer(); }

void LentData::consume(std::uint32_t length, bool compact) {
  if (bytes_ == nullptr) {
    Data::consume(length, compact);
  } else if (length <= length_) {
    bytes_ += length;
    length_ -= length;
  }
}

std::uint8_t* LentData::append(const void* bytes, std::uint32_t length) {
  own();
  return Data::append(bytes, length);
}

std::uint8_t* LentData::append(const Data& other) {
  own();
  return Data::append(other);
}

void LentData::reset() {
  bytes_ = nullptr;
  Data::reset();
}

bool LentData::fill(const void* bytes, std::uint32_t length) {
  own();
  return Data::fill(bytes, length);
}

void LentData::own() {
  if (bytes_ == nullptr) return;
  const std::uint8_t* const lent = bytes_;
  bytes_ = nullptr;
  Data::append(lent, length_);
}

}  // namespace qvn
