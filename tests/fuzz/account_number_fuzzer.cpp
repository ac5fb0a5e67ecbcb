// The search for the account number in print data: what it finds stands in the data, and nothing behind
// counts.
#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/check.h"
#include "printer/bpd/job/account_number_search.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  const auto limit = input.ConsumeIntegralInRange<std::uint32_t>(0, 600);
  const std::string data = input.ConsumeRemainingBytesAsString();

  const auto found = qvn::findAccountNumber(data, limit);
  // The line feed at the limit, the marker, the opening quote and the value.
  constexpr std::size_t kLongest = 1 + 30 + 1 + qvn::kMaxAccountNumberLength;
  QVN_FUZZ_CHECK(found == qvn::findAccountNumber(data.substr(0, limit + kLongest), limit));
  if (!found) return 0;
  QVN_FUZZ_CHECK(found->size() <= qvn::kMaxAccountNumberLength);
  QVN_FUZZ_CHECK(found->find('"') == std::string::npos);
  QVN_FUZZ_CHECK(data.find(*found) != std::string::npos);
  return 0;
}
