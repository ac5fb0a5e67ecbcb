// Search texts as people write them: the places they name are real ones, each once, and not too many.
#include "ipv4/discovery/search_text.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz/check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace qvn::ipv4;
  SearchText search;
  const std::vector<Endpoint>& places = search.places;
  if (parseSearchText({reinterpret_cast<const char*>(bytes), size}, search) != 0) {
    QVN_FUZZ_CHECK(places.empty() && !search.services);
    return 0;
  }
  QVN_FUZZ_CHECK(places.size() <= kMaxSearchPlaces);
  for (const Endpoint& place : places) QVN_FUZZ_CHECK(place.port != 0);
  const auto outOfOrder = std::adjacent_find(places.begin(), places.end(),
                                             [](const Endpoint& a, const Endpoint& b) { return !(a < b); });
  QVN_FUZZ_CHECK(outOfOrder == places.end());
  return 0;
}
