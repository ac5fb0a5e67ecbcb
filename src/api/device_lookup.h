// Finds stored devices by the name of their port.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

#include "device/store/hid_store.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn {

// The port of the local print queue that a shared queue's name ("\\server\share") stands for: that of the
// first queue with the share's name in any case, whatever the server. Any other name, and one that no queue
// has, stays as it is.
std::string portOfSharedQueue(const std::string& name);

// The handle of the device with that port name; printers and scanners are also found by a shared queue's
// name. 0 when the answer is not 0: 1796 when there is none, else the store's or the codec's code.
template <typename Store>
std::uint32_t findByName(const std::string& name, std::uint32_t& handle) {
  constexpr bool kHasQueues = !std::is_same_v<Store, HidStore>;
  handle = 0;
  std::string text;
  const std::uint32_t rc =
      Store::getInstance().findByPortname(kHasQueues ? portOfSharedQueue(name) : name, text);
  return rc != QRN_ERROR_SUCCESS ? rc : AttributeCodec::getLong(text, attribute::kHandle, handle);
}

}  // namespace qvn
