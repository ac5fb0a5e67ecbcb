// NullElem: no value: an empty text, false, and no number.
#pragma once

#include "bidi/element/data_elem.h"

namespace qvn {

class NullElem : public DataElem {
 public:
  std::string stringValue() const override;
  std::int32_t intValue() const override;
  bool booleanValue() const override;
  std::string describe() const override;
  std::unique_ptr<Element> clone() const override;
  void accept(ElementVisitor& visitor) const override;
  bool isInstanceOf(std::string_view className) const override;
};

}  // namespace qvn
