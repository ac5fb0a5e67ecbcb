#include "transport/transport_names.h"

#include <algorithm>
#include <array>

#include "common/text.h"

namespace qvn {
namespace {

struct KnownTransport {
  std::string_view name;
  std::string_view kind;
};

constexpr std::array<KnownTransport, 5> kKnownTransports = {{
    {kUsb1Transport, kLocalTransport},
    {"PAR1", kLocalTransport},
    {"HBN1", kNetworkTransport},
    {"HBN3", kNetworkTransport},
    {"IPv4", kNetworkTransport},
}};

}  // namespace

bool transportMatches(std::string_view filter, std::string_view transportName) {
  if (equalsIgnoringCase(filter, transportName) || equalsIgnoringCase(filter, kAllTransport)) return true;
  return std::any_of(kKnownTransports.begin(), kKnownTransports.end(), [&](const KnownTransport& known) {
    return equalsIgnoringCase(filter, known.kind) && equalsIgnoringCase(transportName, known.name);
  });
}

}  // namespace qvn
