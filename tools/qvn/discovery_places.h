// Where a person says that devices are to be looked for, and whether something answered there.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qvn::cli {

// One item of a search: an address or a range of them, or something else in the transport's own words.
struct Place {
  std::string text;  // as the transport takes it
  std::uint32_t first = 0;
  std::uint32_t last = 0;  // none when 0
  std::uint32_t port = 0;  // the transport's own when 0

  // Whether a device that answers questions at that port (0: unknown) of that address was asked there.
  bool contains(const std::string& address, std::uint32_t answersAt) const;
};

// Takes "192.0.2.17", "192.0.2.20-192.0.2.40" and host names, each with ":port" behind or without, and the
// words of a transport as they are; a comma separates items as another argument does.
std::vector<Place> parsePlaces(const std::vector<std::string>& arguments);

}  // namespace qvn::cli
