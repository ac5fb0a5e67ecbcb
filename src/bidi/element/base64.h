// Base64 with the standard alphabet (RFC 4648), for bytes within XML documents.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qvn {

// With pads and without line breaks.
std::string encodeBase64(std::span<const std::uint8_t> bytes);

// The bytes up to the first group with a pad, at most `maxLength` of them. Characters outside the alphabet
// are passed over; a trailing incomplete group gives nothing.
std::vector<std::uint8_t> decodeBase64(std::string_view text, std::size_t maxLength);

}  // namespace qvn
