// Data: the byte buffer that carries every request, reply, packet and data block between clients, devices and
// transports. It also tells how the last transfer went: a result code and the number of bytes moved.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace qvn {

// Owns its storage; the valid bytes are those from getBuffer() on, getLength() of them. A value: a copy has
// storage of its own that holds the valid bytes, with the same result code and count. Not synchronised.
//
// Whoever is lent one may change and replace its content. What only reads does so through a const Data
// (bytesOf, bytesAsText): data that is lent in place (lent_data.h) is copied as soon as it could be written
// to.
//
// The order of the virtual operations is part of the interface between the library and its plug-ins.
class Data {
 public:
  Data() = default;

  // A copy of `length` bytes. A null pointer makes an empty buffer, whatever the length.
  Data(const void* bytes, std::uint32_t length);

  // `length` bytes of `fillByte`; the library fills the reply buffers it prepares with 0xFF.
  Data(std::uint32_t length, std::uint8_t fillByte);

  // The characters of the text, without a terminator.
  explicit Data(std::string_view text);

  Data(const Data& other);
  // By way of the virtual operations, so that it replaces the content of whatever this is.
  Data& operator=(const Data& other);

  virtual ~Data();

  virtual std::uint32_t getLength() const;

  // The first valid byte, for writing; valid until the next operation that changes the content.
  virtual std::uint8_t* getBuffer();

  // Takes `length` bytes off the front; does nothing when there are fewer. With `compact` the storage in
  // front of the remaining bytes is given up as well.
  virtual void consume(std::uint32_t length, bool compact);

  virtual void setRc(std::uint32_t code);
  virtual void setCount(std::uint32_t count);
  virtual std::uint32_t getCount() const;
  virtual std::uint32_t getRc() const;

  // Adds bytes at the end and returns the first valid byte. `bytes` may lie in this buffer.
  virtual std::uint8_t* append(const void* bytes, std::uint32_t length);
  virtual std::uint8_t* append(const Data& other);

  // Empties the buffer and clears the result code and the count.
  virtual void reset();

  // Replaces the content by `length` bytes, within the room that the content has now: false, and nothing
  // changed, when it is shorter. `bytes` must not lie in this buffer.
  virtual bool fill(const void* bytes, std::uint32_t length);

  // The first valid byte, for reading: copies nothing. Valid until the next operation on the object that is
  // not const.
  virtual const std::uint8_t* getBuffer() const;

 private:
  void assign(const void* bytes, std::uint32_t length);

  std::vector<std::uint8_t> storage_;
  std::size_t start_ = 0;
  std::size_t end_ = 0;
  std::uint32_t rc_ = 0;
  std::uint32_t count_ = 0;
};

// The valid bytes, which the buffer keeps.
inline std::span<const std::uint8_t> bytesOf(const Data& data) {
  return {data.getBuffer(), data.getLength()};
}

// The same as a text.
inline std::string_view bytesAsText(const Data& data) {
  return {reinterpret_cast<const char*>(data.getBuffer()), data.getLength()};
}

}  // namespace qvn
