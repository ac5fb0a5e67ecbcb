// StringElem: a text, with the name of its encoding when there is one to tell.
#pragma once

#include <utility>

#include "bidi/element/data_elem.h"

namespace qvn {

class StringElem : public DataElem {
 public:
  explicit StringElem(std::string value, std::string encoding = {})
      : value_(std::move(value)), encoding_(std::move(encoding)) {}

  std::string stringValue() const override;
  // The number that StringToi reads; else 1 for "true", "y" and "yes", 0 for "false", "n" and "no", in any
  // case. Fails for any other text.
  std::int32_t intValue() const override;
  bool booleanValue() const override;
  std::string describe() const override;
  std::unique_ptr<Element> clone() const override;
  void accept(ElementVisitor& visitor) const override;
  bool isInstanceOf(std::string_view className) const override;

  const std::string& value() const { return value_; }
  const std::string& encoding() const { return encoding_; }

 private:
  std::string value_;
  std::string encoding_;
};

}  // namespace qvn
