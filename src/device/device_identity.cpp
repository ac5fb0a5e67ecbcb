#include "device/device_identity.h"

#include <array>
#include <cstdlib>
#include <string>

#include "kit/tag_map.h"

namespace qvn {

DeviceIdentity DeviceIdentity::of(std::string_view text) {
  std::array<TagMap::Wanted, 2> wanted = {TagMap::Wanted{"Handle", {}}, TagMap::Wanted{"Transport", {}}};
  TagMap::find(text, wanted);
  DeviceIdentity identity;
  if (wanted[0].value) {
    identity.handle = static_cast<std::uint32_t>(std::atol(std::string(*wanted[0].value).c_str()));
  }
  identity.transport = wanted[1].value;
  return identity;
}

}  // namespace qvn
