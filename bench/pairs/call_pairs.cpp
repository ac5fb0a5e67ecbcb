// Exported calls that touch no device, against one bare read of the database.
#include <stdexcept>
#include <string>

#include "measure.h"
#include "pairs/pairs.h"
#include "peers/bare_database.h"
#include "qvn/qvn.h"
#include "qvn/transport/attributes.h"

namespace qvn::bench {
namespace {

constexpr std::uint32_t kCallsPerRound = 2000;

constexpr std::uint32_t kFirstStored = 1000;
constexpr std::uint32_t kStored = 10000;
constexpr std::size_t kTextSize = 1536;
// Walks over all stored printers without any order that a cache could follow.
constexpr std::uint32_t kStride = 3793;

// Gives the stored printers' numbers, 0 to kStored - 1, over and over.
class Walk {
 public:
  std::uint32_t next() { return position_ = (position_ + kStride) % kStored; }

 private:
  std::uint32_t position_ = 0;
};

}  // namespace

void measureCalls(const Installation& installation, RatioTable& table) {
  installation.storePrinters(kFirstStored, kStored, kTextSize);
  BareDatabase bare(kStored, kTextSize);

  // The same entries every time on both sides.
  table.atMost("call: QvnSuspend, logging off / bare database read",
               "a log that can be turned on at any time costs nothing to notice while it is off", 6,
               medianRatio([] { return timeOf(kCallsPerRound, [] { require(QvnSuspend(), "QvnSuspend"); }); },
                           [&] { return timeOf(kCallsPerRound, [&] { bare.read(kStored / 2); }); }));

  // Another entry every time on both sides.
  Walk walk;
  Walk bareWalk;
  const auto getHandle = [&] {
    const std::uint32_t handle = kFirstStored + walk.next();
    std::uint32_t value = 0;
    require(QvnGetLongPrinter(installation.client(), handle, attribute::kHandle, &value),
            "QvnGetLongPrinter");
    if (value != handle) throw std::runtime_error("QvnGetLongPrinter gave another printer's value");
  };
  table.atMost("call: QvnGetLongPrinter, 10,000 stored printers / bare database read",
               "a server with 10,000 printers looks one up in microseconds", 12,
               medianRatio([&] { return timeOf(kCallsPerRound, getHandle); },
                           [&] { return timeOf(kCallsPerRound, [&] { bare.read(bareWalk.next()); }); }));
}

}  // namespace qvn::bench
