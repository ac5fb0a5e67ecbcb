// Listing the stored printers, against a bare walk of the database, and looking one up by its port name,
// against listing them.
#include <stdexcept>
#include <string>

#include "measure.h"
#include "pairs/pairs.h"
#include "peers/bare_database.h"
#include "qvn/qvn.h"

namespace qvn::bench {
namespace {

constexpr std::uint32_t kFirstStored = 1000;
constexpr std::uint32_t kStored = 10000;
// What the IPv4 transport stores of a device.
constexpr std::size_t kTextSize = 512;

std::uint32_t found = 0;
void count(std::uint32_t, std::uint32_t) { ++found; }

void enumerate(std::uint32_t client, std::uint32_t atLeast) {
  found = 0;
  require(QvnEnumPrinters(client, "IPv4", nullptr, count), "QvnEnumPrinters");
  if (found < atLeast) throw std::runtime_error("QvnEnumPrinters left printers out");
}

void findLast(std::uint32_t client) {
  constexpr std::uint32_t kLast = kFirstStored + kStored - 1;
  std::uint32_t handle = 0;
  require(QvnEnumSpecificPrinter(client, ("PORT" + std::to_string(kLast)).c_str(), &handle),
          "QvnEnumSpecificPrinter");
  if (handle != kLast) throw std::runtime_error("QvnEnumSpecificPrinter gave another printer");
}

}  // namespace

void measureEnumeration(const Installation& installation, RatioTable& table) {
  const std::uint32_t client = installation.client();
  installation.storePrinters(kFirstStored, kStored, kTextSize);
  BareDatabase bare(kStored, kTextSize);
  std::vector<std::string> texts;
  const auto enumerateAll = [&] { return timeOf([&] { enumerate(client, kStored); }); };
  table.atMost("enumerate: QvnEnumPrinters, 10,000 stored / bare walk that copies each text",
               "a list of 10,000 printers is there before it can be drawn", 3,
               medianRatio(enumerateAll, [&] { return timeOf([&] { bare.copyAll(texts); }); }));
  table.atMost("enumerate: QvnEnumSpecificPrinter, the last of 10,000 / QvnEnumPrinters",
               "a job finds its printer by the port's name, wherever among 10,000 it is stored", 1.5,
               medianRatio([&] { return timeOf([&] { findLast(client); }); }, enumerateAll));
  installation.removePrinters(kFirstStored, kStored);
}

}  // namespace qvn::bench
