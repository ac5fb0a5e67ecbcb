// What the kit gives transports beside the classes of the contract: settings, numbers, the log.
#include <gmock/gmock.h>

#include <optional>
#include <string>

#include "common/settings/application_settings.h"
#include "platform/files/paths.h"
#include "qvn/transport/device_numbers.h"
#include "qvn/transport/log.h"
#include "qvn/transport/settings.h"
#include "support/content_of.h"
#include "support/library_fixture.h"
#include "support/manual_clock.h"

namespace qvn::test {
namespace {

constexpr char kKey[] = "Kit\\Devices\\";

class KitTest : public LibraryTest {
 protected:
  static std::string logged() { return contentOf(platform::nativePath("c:\\qr__.log")); }
  // None when the registry refuses.
  static std::optional<std::uint32_t> number(const std::string& identity, std::uint32_t first = 60001) {
    std::uint32_t value = 0;
    if (deviceNumber(kKey, identity, first, value) != 0) return std::nullopt;
    return value;
  }

  ApplicationSettings settings;
};

TEST_F(KitTest, ATextSettingIsReadWithADefaultThatAnAdministratorFinds) {
  EXPECT_EQ(transportTextSetting(kKey, "Place", "here"), "here");
  std::string stored;
  EXPECT_TRUE(settings.getString(kKey, "Place", stored, 0));
  EXPECT_EQ(stored, "here");
  EXPECT_EQ(setTransportTextSetting(kKey, "Place", "there"), 0u);
  EXPECT_EQ(transportTextSetting(kKey, "Place", "here"), "there");
  settings.setLong(kKey, "Number", 5, 0);
  EXPECT_EQ(transportTextSetting(kKey, "Number", "default"), "default") << "another type";
  EXPECT_EQ(transportSetting(kKey, "Place", 7), 7u) << "the other way round";
}

TEST_F(KitTest, ADeviceKeepsItsNumberAndANewOneGetsTheNext) {
  std::uint32_t value = 0;
  bool isNew = false;
  EXPECT_EQ(deviceNumber(kKey, "A", 60001, value, &isNew), 0u);
  EXPECT_TRUE(isNew);
  EXPECT_EQ(value, 60001u);
  EXPECT_EQ(number("B"), 60002u);
  settings.setLong(kKey, "set by hand", 60100, 0);
  EXPECT_EQ(number("C"), 60101u);
  EXPECT_EQ(deviceNumber(kKey, "a", 60001, value, &isNew), 0u);
  EXPECT_FALSE(isNew);
  EXPECT_EQ(value, 60001u);
  settings.setString(kKey, "A", "no number", 0);
  EXPECT_EQ(number("A"), 60102u);
  EXPECT_EQ(number("D", 70001), 70001u);
  EXPECT_EQ(deviceNumber("Kit\\Others\\", "A", 80001, value), 0u);
  EXPECT_EQ(value, 80001u);
  EXPECT_EQ(deviceNumber(kKey, "", 60001, value), 87u);
}

TEST_F(KitTest, NothingIsKeptWhileTheLibraryIsNotInstalled) {
  settings.deleteKey("", 0);
  std::uint32_t value = 0;
  EXPECT_EQ(deviceNumber(kKey, "A", 60001, value), 2u);
  EXPECT_EQ(setTransportTextSetting(kKey, "Place", "there"), 2u);
  EXPECT_EQ(transportTextSetting(kKey, "Place", "here"), "here");
  EXPECT_FALSE(ApplicationSettings().isAvailable());
}

TEST_F(KitTest, ALineIsWrittenAsTheLibrarysAre) {
  settings.setLong("Logger", "Clocktime_In_Header", 0, 0);
  transportLog("KitTransport", log_level::kError, "went\r\nwrong");
  EXPECT_EQ(logged(), "KitTransport              went  wrong\r\n");
  EXPECT_FALSE(isTransportLogged("KitTransport", log_level::kDetail));
  transportLog("KitTransport", log_level::kDetail, "detail");
  transportLog(nullptr, log_level::kError, "no name");
  EXPECT_THAT(logged(), testing::Not(testing::HasSubstr("detail")));
}

TEST_F(KitTest, AnAdministratorTurnsAComponentOn) {
  ManualClock clock;
  settings.setLong("Logger", "startLog", 1, 0);
  clock.advance(10001);  // the log looks again
  settings.setLong("Logger", "All", 0, 0);
  settings.setLong("Logger", "KitTransport", log_level::kDetail, 0);
  EXPECT_TRUE(isTransportLogged("KitTransport", log_level::kDetail));
  EXPECT_FALSE(isTransportLogged("KitTransport", log_level::kTrace));
  EXPECT_FALSE(isTransportLogged("Other", log_level::kDetail));
  EXPECT_TRUE(isTransportLogged("Bidi", log_level::kDetail)) << "what the library's own mask is";
}

TEST(TransportLog, IsSilentWithoutALibrary) {
  EXPECT_FALSE(isTransportLogged("KitTransport", log_level::kError));
  transportLog("KitTransport", log_level::kError, "lost");
}

}  // namespace
}  // namespace qvn::test
