// BooleanElem: true or false.
#pragma once

#include "bidi/element/data_elem.h"

namespace qvn {

class BooleanElem : public DataElem {
 public:
  explicit BooleanElem(bool value) : value_(value) {}
  // True for "true", "yes" and "y" in any case.
  explicit BooleanElem(std::string_view text);
  // Else a literal would be taken for a truth value.
  explicit BooleanElem(const char* text) : BooleanElem(std::string_view(text)) {}

  std::string stringValue() const override;
  std::int32_t intValue() const override;
  bool booleanValue() const override;
  std::string describe() const override;
  std::unique_ptr<Element> clone() const override;
  void accept(ElementVisitor& visitor) const override;
  bool isInstanceOf(std::string_view className) const override;

 private:
  bool value_;
};

}  // namespace qvn
