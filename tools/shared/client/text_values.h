// Numbers and bytes as a person writes them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qvn::cli {

// An unsigned 32-bit number, decimal or with 0x; none when the text is anything else.
std::optional<std::uint32_t> parseNumber(std::string_view text);

// Two hexadecimal digits per byte; blanks, commas, colons and dashes between bytes are skipped. None when the
// text is anything else.
std::optional<std::string> parseHex(std::string_view text);

// Upper-case digits, two per byte, with `separator` between bytes.
std::string formatHex(std::string_view bytes, std::string_view separator = "");
std::string formatHex(std::span<const std::uint8_t> bytes, std::string_view separator = "");

// "; did you mean 'print'?" for the word that is nearest to a mistyped one, or nothing when none is near.
std::string didYouMean(const std::string& mistyped, const std::vector<std::string>& words);

}  // namespace qvn::cli
