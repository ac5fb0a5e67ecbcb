// Every exported function with arguments that are missing, and with handles that name no device.
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "qvn/transport/attributes.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

constexpr std::uint32_t kClient = 1;
constexpr std::uint32_t kUnknown = 77;

using Call = std::function<std::uint32_t()>;

// A function called with one of the arguments at these places missing, each in turn: zero or null.
template <std::size_t... kPlaces, typename... Parameters>
std::vector<Call> missing(std::uint32_t (*function)(Parameters...),
                          std::type_identity_t<Parameters>... arguments) {
  [[maybe_unused]] const auto without =
      [=]<std::size_t kPlace>(std::integral_constant<std::size_t, kPlace>) -> Call {
    std::tuple<Parameters...> given(arguments...);
    std::get<kPlace>(given) = {};
    return [=] { return std::apply(function, given); };
  };
  return {without(std::integral_constant<std::size_t, kPlaces>())...};
}

struct Case {
  const char* name;
  std::uint32_t zeroHandle;     // what the handle 0 gives
  std::uint32_t unknownHandle;  // what a handle that no store holds gives
  std::function<std::uint32_t(std::uint32_t handle)> call;
  std::vector<Call> missing;  // each gives 87
};

// A function of a device, the arguments behind the handle, and the places of those that it requires.
template <std::size_t... kPlaces, typename... Rest>
Case of(const char* name, std::uint32_t zeroHandle, std::uint32_t unknownHandle,
        std::uint32_t (*function)(std::uint32_t, std::uint32_t, Rest...),
        std::type_identity_t<Rest>... rest) {
  return {name, zeroHandle, unknownHandle, [=](auto handle) { return function(kClient, handle, rest...); },
          missing<kPlaces...>(function, kClient, 1, rest...)};
}

std::uint32_t number = 0;
std::uint8_t buffer[64];
char text[64];
void deviceFound(std::uint32_t, std::uint32_t) {}
void queueFound(std::uint32_t, const char*, const char*) {}
void alert(std::uint32_t, const std::uint8_t*, std::uint32_t, std::uint32_t) {}
void notification(std::uint32_t, std::uint32_t, std::uint32_t, const std::uint8_t*, std::uint32_t,
                  std::uint32_t) {}
std::uint32_t scanData(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, const std::uint8_t*,
                       std::uint32_t) {
  return 0;
}
void report(std::uint32_t, std::uint32_t, const std::uint8_t*, std::uint32_t) {}

const std::uint8_t kPacket[] = {0xA5, 0, 3, 0x50, 1, 0};
const char* const kKey = attribute::kPortname;
const char* const kLongKey = attribute::kHandle;

const std::vector<Case>& deviceCases() {
  static const std::vector<Case> cases = {
      of("OpenPrinter", 6, 6, QvnOpenPrinter),
      of("ClosePrinter", 6, 6, QvnClosePrinter),
      of("DeletePrinter", 6, 2, QvnDeletePrinter),
      of<3>("StartJobPrinter", 6, 6, QvnStartJobPrinter, 1, "q", nullptr, nullptr, nullptr),
      of<2, 3, 4>("WritePrinter", 6, 6, QvnWritePrinter, buffer, 1, &number),
      of("EndJobPrinter", 6, 6, QvnEndJobPrinter),
      of("CancelJobPrinter", 6, 0, QvnCancelJobPrinter),
      of<2, 4, 6>("ExchangeNpaPrinter", 6, 6, QvnExchangeNpaPrinter, kPacket, 6, buffer, 64, &number),
      of<2, 4>("GetCachePrinter", 6, 6, QvnGetCachePrinter, buffer, 64, &number),
      of("GetCurrentStatePrinter", 6, 6, QvnGetCurrentStatePrinter, &number),
      of<2, 3>("GetLongPrinter", 6, 1168, QvnGetLongPrinter, kLongKey, &number),
      of<2, 3, 4, 5>("GetStringPrinter", 6, 1168, QvnGetStringPrinter, kKey, text, 64, &number),
      of<2, 3, 4, 5>("GetWideStringPrinter", 6, 1168, QvnGetWideStringPrinter, kKey, buffer, 64, &number),
      of<2, 3, 5>("GetByteArrayPrinter", 6, 1168, QvnGetByteArrayPrinter, kKey, buffer, 64, &number),
      of<2>("SetLongPrinter", 6, 6, QvnSetLongPrinter, kKey, 1),
      of<2, 3>("SetStringPrinter", 6, 6, QvnSetStringPrinter, kKey, "x", 1),
      of<2, 3, 4>("SetByteArrayPrinter", 6, 6, QvnSetByteArrayPrinter, kKey, buffer, 1),
      of<0, 3>("RegisterForAlertsPrinter", 6, 6, QvnRegisterForAlertsPrinter, 1, alert),
      of("UnregisterForAlertsPrinter", 6, 6, QvnUnregisterForAlertsPrinter),
      of<0, 3>("RegisterForNotificationsPrinter", 6, 6, QvnRegisterForNotificationsPrinter, 1, notification),
      of("UnregisterForNotificationsPrinter", 6, 6, QvnUnregisterForNotificationsPrinter),

      of("OpenScanner", 6, 6, QvnOpenScanner),
      of("CloseScanner", 6, 6, QvnCloseScanner),
      of("DeleteScanner", 6, 2, QvnDeleteScanner),
      of("StartJobScanner", 6, 6, QvnStartJobScanner, nullptr),
      of("EndJobScanner", 6, 6, QvnEndJobScanner),
      of("CancelJobScanner", 6, 6, QvnCancelJobScanner),
      of<2, 3, 4, 5, 6>("ExchangeDataScanner", 6, 6, QvnExchangeDataScanner, kPacket, 6, buffer, 64, &number),
      of<2, 3, 4, 5>("GetStringScanner", 6, 1168, QvnGetStringScanner, kKey, text, 64, &number),
      of<2, 3>("GetLongScanner", 6, 1168, QvnGetLongScanner, kLongKey, &number),
      of("GetCurrentStateScanner", 6, 6, QvnGetCurrentStateScanner, &number),
      of<2, 3>("SetJobStringScanner", 6, 6, QvnSetJobStringScanner, "k", "v"),
      of<2, 3>("SetJobLongScanner", 6, 6, QvnSetJobLongScanner, "k", 1),
      of("RegisterForAsyncDataScanner", 6, 0, QvnRegisterForAsyncDataScanner, 1, scanData),
      of("UnregisterForAsyncDataScanner", 6, 0, QvnUnregisterForAsyncDataScanner),

      of("OpenHid", 6, 6, QvnOpenHid),
      of("CloseHid", 6, 6, QvnCloseHid),
      of("DeleteHid", 6, 2, QvnDeleteHid),
      of("RegisterForReportsHid", 6, 6, QvnRegisterForReportsHid, report),
      of("UnregisterForReportsHid", 6, 0, QvnUnregisterForReportsHid),
      of<0, 2>("RegisterForNotificationsHid", 6, 0, QvnRegisterForNotificationsHid, notification),
      of<0>("UnregisterForNotificationsHid", 6, 0, QvnUnregisterForNotificationsHid),
      of("GetLongHid", 6, 1168, QvnGetLongHid, kLongKey, &number),
      of<2, 3, 4, 5>("GetStringHid", 6, 1168, QvnGetStringHid, kKey, text, 64, &number),
      of("GetCurrentStateHid", 6, 6, QvnGetCurrentStateHid, &number),
  };
  return cases;
}

// The functions without a device, and those that miss an argument before they look at the handle.
const std::vector<std::pair<const char*, std::vector<Call>>>& otherCases() {
  static const std::vector<std::pair<const char*, std::vector<Call>>> cases = {
      {"GetCurrentStatePrinter", missing<2>(QvnGetCurrentStatePrinter, kClient, 0, &number)},
      {"GetCurrentStateScanner", missing<2>(QvnGetCurrentStateScanner, kClient, 0, &number)},
      {"GetCurrentStateHid", missing<2>(QvnGetCurrentStateHid, kClient, 0, &number)},
      {"GetLongHid", missing<2, 3>(QvnGetLongHid, kClient, 0, kLongKey, &number)},
      {"EnumPrinters", missing<1, 3>(QvnEnumPrinters, kClient, "ALL_TRANSPORT", "", deviceFound)},
      {"EnumScanners", missing<1, 3>(QvnEnumScanners, kClient, "ALL_TRANSPORT", "", deviceFound)},
      {"EnumHids", missing<1, 3>(QvnEnumHids, kClient, "ALL_TRANSPORT", "", deviceFound)},
      {"EnumWindowsScanners", missing<1, 2>(QvnEnumWindowsScanners, kClient, "ALL_TRANSPORT", queueFound)},
      {"EnumWindowsHids", missing<1, 2>(QvnEnumWindowsHids, kClient, "ALL_TRANSPORT", queueFound)},
      {"EnumSpecificPrinter", missing<1, 2>(QvnEnumSpecificPrinter, kClient, "P", &number)},
      {"EnumSpecificScanner", missing<1, 2>(QvnEnumSpecificScanner, kClient, "P", &number)},
      {"EnumSpecificHid", missing<1, 2>(QvnEnumSpecificHid, kClient, "P", &number)},
      {"Discovery", missing<1>(QvnDiscovery, kClient, "FAKE", "")},
      {"ValidatePortName", missing<1>(QvnValidatePortName, kClient, "P")},
      {"GetDiscoveryDefaults",
       missing<1, 2, 3, 4>(QvnGetDiscoveryDefaults, kClient, "FAKE", text, 64, &number)},
      {"SetDiscoveryDefaults", missing<1, 2>(QvnSetDiscoveryDefaults, kClient, "FAKE", "")},
      {"AddTransport", missing<0>(QvnAddTransport, "m")},
      {"RemoveTransport", missing<0>(QvnRemoveTransport, "m")},
      {"GetHostInfo", missing<1, 2, 3, 4>(QvnGetHostInfo, kClient, kKey, text, 64, &number)},
      {"SetHostInfo", missing<1, 2, 3>(QvnSetHostInfo, kClient, kKey, "v", 1)},
      {"SetClientInfo", missing<1, 2>(QvnSetClientInfo, kClient, "k", "v")},
  };
  return cases;
}

void expectEach(std::uint32_t result, const std::vector<Call>& calls) {
  for (std::size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(calls[i](), result) << "argument " << i;
}

class ArgumentsTest : public LibraryTest {};

TEST_F(ArgumentsTest, HandlesThatNameNoDeviceAndMissingArguments) {
  for (const Case& c : deviceCases()) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.call(0), c.zeroHandle);
    EXPECT_EQ(c.call(kUnknown), c.unknownHandle);
    expectEach(87, c.missing);
  }
  for (const auto& [name, calls] : otherCases()) {
    SCOPED_TRACE(name);
    expectEach(87, calls);
  }
  EXPECT_EQ(QvnRegisterForReportsHid(kClient, 1, nullptr), 1u) << "not 87";
  EXPECT_EQ(QvnGetClientId(nullptr), 87u);
  EXPECT_TRUE(fake.calls().empty()) << "nothing is forwarded";
}

TEST(NotInitialised, EveryTracedFunctionGivesOneAndDoesNothing) {
  for (int round = 0; round < 2; ++round) {
    for (const Case& c : deviceCases()) EXPECT_EQ(c.call(kUnknown), 1u) << c.name;
    for (const auto& [name, calls] : otherCases()) {
      SCOPED_TRACE(name);
      expectEach(1, calls);
    }
    EXPECT_EQ(QvnSuspend(), 1u);
    EXPECT_EQ(QvnResume(), 1u);
    EXPECT_EQ(QvnAddMonitor(), 1u);
    EXPECT_EQ(QvnGetClientId(&number), 0u);
    EXPECT_EQ(QvnGetClientId(nullptr), 87u);
    EXPECT_EQ(QvnInitialize(), 0u);
    EXPECT_EQ(QvnSuspend(), 0u);
    EXPECT_EQ(QvnResume(), 0u);
    EXPECT_EQ(QvnSetClientInfo(kClient, "k", "v"), 0u);
    EXPECT_EQ(QvnUninitialize(), 0u);
  }
}

}  // namespace
}  // namespace qvn::test
