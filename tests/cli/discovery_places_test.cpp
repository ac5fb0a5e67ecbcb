#include "discovery_places.h"

#include <gtest/gtest.h>

namespace qvn::cli {
namespace {

TEST(DiscoveryPlaces, AreAddressesRangesAndTheTransportsOwnWords) {
  const auto places = parsePlaces({"192.0.2.20-192.0.2.40", " 192.0.2.17:9300 ,dns-sd", "/tmp/file", ""});
  ASSERT_EQ(places.size(), 4U);
  EXPECT_TRUE(places[0].contains("192.0.2.40", 9300));
  EXPECT_TRUE(places[0].contains("192.0.2.20", 0));
  EXPECT_FALSE(places[0].contains("192.0.2.41", 0));
  EXPECT_EQ(places[1].text, "192.0.2.17:9300");
  EXPECT_TRUE(places[1].contains("192.0.2.17", 9300));
  EXPECT_TRUE(places[1].contains("192.0.2.17", 0)) << "where it answers is not known";
  EXPECT_FALSE(places[1].contains("192.0.2.17", 9200));
  for (const Place& own : {places[2], places[3]}) EXPECT_EQ(own.last, 0U) << own.text;
  EXPECT_EQ(parsePlaces({"localhost:9201"}).at(0).text, "127.0.0.1:9201");
}

}  // namespace
}  // namespace qvn::cli
