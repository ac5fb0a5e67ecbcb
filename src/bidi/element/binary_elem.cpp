#include "bidi/element/binary_elem.h"

#include "bidi/element/element_failure.h"
#include "bidi/element/element_visitor.h"

namespace qvn {

BinaryElem::BinaryElem(const std::uint8_t* bytes, std::uint32_t length) {
  if (bytes != nullptr) bytes_.assign(bytes, bytes + length);
}

std::string BinaryElem::stringValue() const { failElement("BinaryElem::stringValue: not supported"); }

std::int32_t BinaryElem::intValue() const { failElement("BinaryElem::intValue: not supported"); }

bool BinaryElem::booleanValue() const { failElement("BinaryElem::booleanValue: not supported"); }

std::string BinaryElem::describe() const { return "BinaryElem"; }

const std::uint8_t* BinaryElem::binaryValue() const { return bytes_.empty() ? nullptr : bytes_.data(); }

std::uint32_t BinaryElem::binaryLength() const { return static_cast<std::uint32_t>(bytes_.size()); }

std::unique_ptr<Element> BinaryElem::clone() const { return std::make_unique<BinaryElem>(bytes_); }

void BinaryElem::accept(ElementVisitor& visitor) const { visitor.visitBinaryElem(*this); }

bool BinaryElem::isInstanceOf(std::string_view className) const {
  return className == "BinaryElem" || DataElem::isInstanceOf(className);
}

}  // namespace qvn
