#include "exchange_rows.h"

#include <cstdint>
#include <thread>

#include "measure.h"

namespace qvn::bench {
namespace {

constexpr int kRoundsPerConnection = 5;
constexpr std::uint32_t kExchangesPerRound = 100;

}  // namespace

std::vector<double> exchangeRatios(const std::function<void()>& library, const std::function<void()>& bare) {
  const auto onThread = [&] { std::thread(bare).join(); };
  Turns turns({[&] { return timeOf(kExchangesPerRound, library); },
               [&] { return timeOf(kExchangesPerRound, onThread); },
               [&] { return timeOf(kExchangesPerRound, bare); }});
  return turns.measure(kRoundsPerConnection);
}

void addExchangeRows(RatioTable& table, const std::string& library, const std::string& bare,
                     const std::string& use, const std::function<std::vector<double>()>& round) {
  const std::vector<Ratio> ratios = untilStable(round);
  const std::string name = "exchange: " + library + " / " + bare;
  table.atMost(name + " on a thread of its own", use + " costs no more than a thread for each request", 1,
               ratios[0]);
  table.atMost(name + " without a thread", use + " is hardly slower than the network", 1.7, ratios[1]);
}

}  // namespace qvn::bench
