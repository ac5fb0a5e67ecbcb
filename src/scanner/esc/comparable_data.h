// ComparableData: a Data that can be told equal to another.
#pragma once

#include "qvn/transport/data.h"

namespace qvn {

class ComparableData : public Data {
 public:
  using Data::Data;
  explicit ComparableData(const Data& data) : Data(data) {}

  // Same number of bytes, same bytes.
  virtual bool equals(const Data& other) const;
  virtual bool notEquals(const Data& other) const;
};

}  // namespace qvn
