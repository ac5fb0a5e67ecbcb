// The search for a job's account number in the PJL at the head of its print data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qvn {

// A longer account number is cut.
inline constexpr std::size_t kMaxAccountNumberLength = 21;

// Looks for a line that begins with "@PJL LJOBINFO ACCOUNTNUMBER = " and takes the quoted value after it,
// which ends at the latest with the data. The line feed before the line must be at a position of at most
// `limit`.
std::optional<std::string> findAccountNumber(std::string_view data, std::uint32_t limit);

}  // namespace qvn
