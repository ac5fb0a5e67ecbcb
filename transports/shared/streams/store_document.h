// What ties a reply of a device's object store to its request: the attribute requestID of the root element,
// found by a search in the text. The documents are read by the library, not here.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace qvn::shared {

// The id of a method document, a view into it; empty when it has none or is no such document.
std::string_view requestIdOf(std::string_view document);

// The id of the request that a block from the device replies to, a view into it; empty when it is no reply.
// The document may be bare or in a frame: 8 bytes, the first of which is AA, BB, CC, DD, EE or FF and the
// last four are its length, big-endian.
std::string_view answeredIdOf(std::span<const std::uint8_t> block);

}  // namespace qvn::shared
