// The search for the account number in print data: the same is found however the data is split.
#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/check.h"
#include "printer/bpd/job/account_number_search.h"

namespace {

using qvn::AccountNumberSearch;

std::optional<std::string> feed(AccountNumberSearch& search, const std::string& data) {
  return search.feed({reinterpret_cast<const std::uint8_t*>(data.data()), data.size()});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  const auto limit = input.ConsumeIntegralInRange<std::uint32_t>(0, 600);
  const auto split = input.ConsumeIntegral<std::uint16_t>();
  const std::string data = input.ConsumeRemainingBytesAsString();

  AccountNumberSearch whole(limit);
  const auto expected = feed(whole, data);
  AccountNumberSearch parts(limit);
  const std::size_t at = data.empty() ? 0 : split % data.size();
  auto found = feed(parts, data.substr(0, at));
  if (!found) found = feed(parts, data.substr(at));
  QVN_FUZZ_CHECK(found == expected);
  QVN_FUZZ_CHECK(parts.isOver() == whole.isOver());
  if (expected) QVN_FUZZ_CHECK(expected->size() <= AccountNumberSearch::kMaxLength);
  return 0;
}
