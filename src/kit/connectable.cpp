#include "qvn/transport/connectable.h"

#include "qvn/result_codes.h"
#include "qvn/transport/data.h"

namespace qvn {

Connectable::~Connectable() = default;

Connectable* Connectable::getChild(std::uint32_t index) { return index < 2 ? children_[index] : nullptr; }

bool Connectable::setChild(std::uint32_t index, Connectable* child) {
  if (index >= 2) return false;
  children_[index] = child;
  return true;
}

void Connectable::reserved() {}

void Connectable::accept(Visitor& visitor) { visitor.visit(*this); }

void Connectable::acceptChild(std::uint32_t index, Visitor& visitor) {
  if (Connectable* child = getChild(index)) child->accept(visitor);
}

void Connectable::releaseChild0() { children_[0] = nullptr; }
void Connectable::releaseChild1() { children_[1] = nullptr; }

void Connectable::write(Data& data) {
  data.setRc(QRN_ERROR_INVALID_FUNCTION);
  data.setCount(0);
}

std::uint32_t Connectable::doOpen() { return QRN_ERROR_SUCCESS; }
std::uint32_t Connectable::doClose() { return QRN_ERROR_SUCCESS; }

void Connectable::setLabel(const std::string& label) { label_ = label; }
std::string Connectable::getLabel() const { return label_; }
void Connectable::setTag(std::uint32_t tag) { tag_ = tag; }
std::uint32_t Connectable::getTag() const { return tag_; }

std::uint32_t Connectable::open() {
  if (openCount_.load() == 0) {
    const std::uint32_t rc = doOpen();
    if (rc != QRN_ERROR_SUCCESS) return rc;
  }
  ++openCount_;
  return QRN_ERROR_SUCCESS;
}

std::uint32_t Connectable::close() {
  // A close too many must not wrap the count, which would leave the connection open for good.
  std::uint32_t count = openCount_.load();
  while (count != 0) {
    if (openCount_.compare_exchange_weak(count, count - 1)) {
      return count == 1 ? doClose() : QRN_ERROR_SUCCESS;
    }
  }
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
