#include "scanner/esc/comparable_data.h"

#include <algorithm>

namespace qvn {

bool ComparableData::equals(const Data& other) const {
  return std::equal(getBuffer(), getBuffer() + getLength(), other.getBuffer(),
                    other.getBuffer() + other.getLength());
}

bool ComparableData::notEquals(const Data& other) const { return !equals(other); }

}  // namespace qvn
