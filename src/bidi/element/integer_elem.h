// IntegerElem: a signed 32-bit number.
#pragma once

#include "bidi/element/data_elem.h"

namespace qvn {

class IntegerElem : public DataElem {
 public:
  explicit IntegerElem(std::int32_t value) : value_(value) {}

  std::string stringValue() const override;
  std::int32_t intValue() const override;
  bool booleanValue() const override;
  std::string describe() const override;
  std::unique_ptr<Element> clone() const override;
  void accept(ElementVisitor& visitor) const override;
  bool isInstanceOf(std::string_view className) const override;

 private:
  std::int32_t value_;
};

}  // namespace qvn
