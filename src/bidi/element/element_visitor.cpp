#include "bidi/element/element_visitor.h"

namespace qvn {

void ElementVisitor::visitElement(const Element& /*element*/) {}

ElementVisitor::~ElementVisitor() = default;

}  // namespace qvn
