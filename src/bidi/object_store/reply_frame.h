// The frame that a reply of an object store may arrive in: byte 0 is AA, BB, CC, DD, EE or FF, bytes 4 to 7
// are the length of the payload (big-endian), which follows from byte 8 on.
#pragma once

#include <string_view>

namespace qvn {

// The payload of a framed reply, at most as long as what is there; anything else as it is.
std::string_view unwrapReply(std::string_view reply);

}  // namespace qvn
