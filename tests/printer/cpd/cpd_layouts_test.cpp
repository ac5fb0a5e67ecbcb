// The layouts of the status cache and of the alerts that the library acts on.
#include <gtest/gtest.h>

#include <array>

#include "common/exception.h"
#include "printer/cpd/cpd_printer_alert.h"
#include "printer/cpd/cpd_printer_cache.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

TEST(CpdPrinterCache, FindsEntriesByIdAndLength) {
  CpdPrinterCache cache(bytes({0xA5, 0,  0, 0, 0xE0, 0x81, 0,    0xF0, 9,  9, 9,    9,    9, 9,  9,  //
                               0,    16, 0, 0, 17,   1,    0xAA, 0,    18, 2, 0xBB, 0xCC, 0, 19, 5, 1}));
  const std::array<std::uint8_t, 1> one = {5};
  const std::array<std::uint8_t, 2> two = {6, 7};
  const std::array<std::uint8_t, 5> five = {};
  EXPECT_EQ(cache.update(17, one), 0u);
  EXPECT_EQ(cache.update(18, two), 0u);
  EXPECT_EQ(cache.update(17, two), 87u);
  EXPECT_EQ(cache.update(20, one), 1168u);
  EXPECT_EQ(cache.update(19, five), 1168u) << "an entry that runs past the end is none";
  EXPECT_EQ(cache.data().getBuffer()[21], 5);
  EXPECT_EQ(cache.data().getBuffer()[26], 7);
}

TEST(CpdPrinterCache, RefusesOtherData) {
  for (const Data& data : {bytes({0xA5, 0, 5, 0, 0xE0, 0x81, 0, 0xF0}),
                           bytes({0xA5, 0, 6, 0, 0xE0, 0x81, 0, 0xF1, 0}), Data()}) {
    EXPECT_FALSE(CpdPrinterCache::isValid(data));
    EXPECT_THROW(CpdPrinterCache{data}, Win32Exception);
  }
}

TEST(CpdPrinterAlert, AreThreeAndNoOthers) {
  const Data reset = bytes({0xA5, 0, 5, 0, 0xFF, 1, 0, 0});
  Data status =
      bytes({0xA5, 0, 21, 0, 0xF0, 0x73, 1, 1, 0x10, 1, 0x10, 0, 0, 0, 0, 0, 17, 1, 5, 0, 18, 2, 0, 0x2A});
  const Data acknowledge = bytes({0xA5, 0, 9, 0, 0xF0, 0x73, 1, 1, 8, 1, 8, 0});
  EXPECT_TRUE(CpdPrinterAlert::isPowerOnReset(reset));
  EXPECT_TRUE(CpdPrinterAlert::isStatus(status));
  EXPECT_TRUE(CpdPrinterAlert::isCancelPrintAcknowledge(acknowledge));
  for (Data data : {reset, status, acknowledge}) {
    Data shorter(data.getBuffer(), data.getLength() - 1);
    EXPECT_THROW(CpdPrinterAlert{shorter}, Win32Exception);
    data.getBuffer()[0] = 0xA4;
    EXPECT_THROW(CpdPrinterAlert{data}, Win32Exception);
  }
  status.append("x", 1);
  EXPECT_TRUE(CpdPrinterAlert::isStatus(status)) << "may be longer";
}

}  // namespace
}  // namespace qvn::test
