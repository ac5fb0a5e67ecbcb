// DataElem: the base of the elements that hold one value.
#pragma once

#include "bidi/element/terminal_elem.h"

namespace qvn {

class DataElem : public TerminalElem {
 public:
  // The same as clone: a data element has nothing that the two could treat differently.
  std::unique_ptr<Element> duplicate() const override;
  bool isInstanceOf(std::string_view className) const override;
};

}  // namespace qvn
