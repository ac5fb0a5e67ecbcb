// BinaryElem: bytes of its own; the only element that can be read as bytes and only so.
#pragma once

#include <utility>

#include "bidi/element/data_elem.h"

namespace qvn {

class BinaryElem : public DataElem {
 public:
  // Copies the bytes; null makes an empty element, whatever the length.
  BinaryElem(const std::uint8_t* bytes, std::uint32_t length);
  explicit BinaryElem(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}

  std::string stringValue() const override;
  std::int32_t intValue() const override;
  bool booleanValue() const override;
  std::string describe() const override;
  const std::uint8_t* binaryValue() const override;
  std::uint32_t binaryLength() const override;
  std::unique_ptr<Element> clone() const override;
  void accept(ElementVisitor& visitor) const override;
  bool isInstanceOf(std::string_view className) const override;

 private:
  std::vector<std::uint8_t> bytes_;
};

}  // namespace qvn
