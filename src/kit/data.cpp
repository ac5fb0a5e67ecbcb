#include "qvn/transport/data.h"

#include <algorithm>
#include <cstring>

namespace qvn {

Data::Data(const void* bytes, std::uint32_t length) {
  if (bytes != nullptr) assign(bytes, length);
}

Data::Data(std::uint32_t length, std::uint8_t fillByte) : storage_(length, fillByte), end_(length) {}

Data::Data(std::string_view text) { assign(text.data(), static_cast<std::uint32_t>(text.size())); }

Data::Data(const Data& other)
    : storage_(other.getBuffer(), other.getBuffer() + other.getLength()),
      end_(storage_.size()),
      rc_(other.rc_),
      count_(other.count_) {}

Data& Data::operator=(const Data& other) {
  if (this != &other) {
    reset();
    append(other);
    setRc(other.getRc());
    setCount(other.getCount());
  }
  return *this;
}

Data::~Data() = default;

std::uint32_t Data::getLength() const { return static_cast<std::uint32_t>(end_ - start_); }

std::uint8_t* Data::getBuffer() { return storage_.data() + start_; }
const std::uint8_t* Data::getBuffer() const { return storage_.data() + start_; }

void Data::consume(std::uint32_t length, bool compact) {
  if (length <= getLength()) start_ += length;
  if (compact) {
    storage_.erase(storage_.begin(), storage_.begin() + static_cast<std::ptrdiff_t>(start_));
    start_ = 0;
    end_ = storage_.size();
  }
}

void Data::setRc(std::uint32_t code) { rc_ = code; }
void Data::setCount(std::uint32_t count) { count_ = count; }
std::uint32_t Data::getCount() const { return count_; }
std::uint32_t Data::getRc() const { return rc_; }

std::uint8_t* Data::append(const void* bytes, std::uint32_t length) {
  if (bytes == nullptr || length == 0) return getBuffer();
  const auto* source = static_cast<const std::uint8_t*>(bytes);
  const std::uint8_t* begin = storage_.data();
  const bool ownBytes = source >= begin && source < begin + storage_.size();
  const std::size_t offset = ownBytes ? static_cast<std::size_t>(source - begin) : 0;
  const std::size_t oldSize = storage_.size();
  storage_.resize(oldSize + length);
  if (ownBytes) source = storage_.data() + offset;
  std::memmove(storage_.data() + oldSize, source, length);
  end_ = storage_.size();
  return getBuffer();
}

std::uint8_t* Data::append(const Data& other) { return append(other.getBuffer(), other.getLength()); }

void Data::reset() {
  storage_.clear();
  start_ = end_ = 0;
  rc_ = count_ = 0;
}

bool Data::fill(const void* bytes, std::uint32_t length) {
  if (getLength() < length) return false;
  start_ = end_ - length;
  if (length != 0) std::memcpy(getBuffer(), bytes, length);
  return true;
}

void Data::assign(const void* bytes, std::uint32_t length) {
  const auto* source = static_cast<const std::uint8_t*>(bytes);
  storage_.assign(source, source + length);
  start_ = 0;
  end_ = length;
  rc_ = count_ = 0;
}

}  // namespace qvn
