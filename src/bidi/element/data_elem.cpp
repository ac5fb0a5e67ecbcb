#include "bidi/element/data_elem.h"

namespace qvn {

std::unique_ptr<Element> DataElem::duplicate() const { return clone(); }

bool DataElem::isInstanceOf(std::string_view className) const {
  return className == "DataElem" || TerminalElem::isInstanceOf(className);
}

}  // namespace qvn
