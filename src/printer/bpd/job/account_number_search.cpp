#include "printer/bpd/job/account_number_search.h"

namespace qvn {
namespace {

constexpr std::string_view kMarker = "@PJL LJOBINFO ACCOUNTNUMBER = ";

}  // namespace

std::optional<std::string> findAccountNumber(std::string_view data, std::uint32_t limit) {
  std::size_t position = 0;
  while (position <= limit && position < data.size()) {
    if (data[position] != '\n') {
      ++position;
      continue;
    }
    std::string_view line = data.substr(position + 1);
    if (line.starts_with(kMarker)) {
      line.remove_prefix(kMarker.size());
      // Whatever stands for the opening quote is skipped.
      const std::string_view value = line.substr(line.empty() ? 0 : 1, kMaxAccountNumberLength);
      return std::string(value.substr(0, value.find('"')));
    }
    // The byte after a line feed is not looked at again, whatever it is.
    position += 2;
  }
  return std::nullopt;
}

}  // namespace qvn
