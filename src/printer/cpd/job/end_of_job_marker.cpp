#include "printer/cpd/job/end_of_job_marker.h"

#include <algorithm>

#include "common/byte_reader.h"

namespace qvn {

bool endsWithEndOfJobMarker(const Data& data) {
  if (data.getLength() < kEndOfJobMarker.size()) return false;
  const auto tail = ByteReader(data).bytes(data.getLength() - kEndOfJobMarker.size(), kEndOfJobMarker.size());
  return std::equal(tail.begin(), tail.end(), kEndOfJobMarker.begin());
}

}  // namespace qvn
