// Every exported function with arguments that are missing, and with handles that name no device.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "qvn/transport/attributes.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

constexpr std::uint32_t kClient = 1;
constexpr std::uint32_t kUnknown = 77;

// Calls a function with the handle 0, with a handle that was never stored, and with each of its required
// arguments missing in turn.
struct Case {
  const char* name;
  std::uint32_t zeroHandle;     // what the handle 0 gives
  std::uint32_t unknownHandle;  // what a handle that no store holds gives
  std::function<std::uint32_t(std::uint32_t handle)> call;
  std::vector<std::function<std::uint32_t()>> missing;  // each gives 87
};

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

// clang-format off
const std::vector<Case>& deviceCases() {
  static const std::vector<Case> cases = {
  {"OpenPrinter", 6, 6, [](auto h) { return QvnOpenPrinter(kClient, h); }, {}},
  {"ClosePrinter", 6, 6, [](auto h) { return QvnClosePrinter(kClient, h); }, {}},
  {"DeletePrinter", 6, 2, [](auto h) { return QvnDeletePrinter(kClient, h); }, {}},
  {"StartJobPrinter", 6, 6, [](auto h) { return QvnStartJobPrinter(kClient, h, 1, "q", nullptr, nullptr, nullptr); },
   {[] { return QvnStartJobPrinter(kClient, 1, 1, nullptr, "", "", ""); }}},
  {"WritePrinter", 6, 6, [](auto h) { return QvnWritePrinter(kClient, h, buffer, 1, &number); },
   {[] { return QvnWritePrinter(kClient, 1, nullptr, 1, &number); },
    [] { return QvnWritePrinter(kClient, 1, buffer, 0, &number); },
    [] { return QvnWritePrinter(kClient, 1, buffer, 1, nullptr); }}},
  {"EndJobPrinter", 6, 6, [](auto h) { return QvnEndJobPrinter(kClient, h); }, {}},
  {"CancelJobPrinter", 6, 0, [](auto h) { return QvnCancelJobPrinter(kClient, h); }, {}},
  {"ExchangeNpaPrinter", 6, 6, [](auto h) { return QvnExchangeNpaPrinter(kClient, h, kPacket, 6, buffer, 64, &number); },
   {[] { return QvnExchangeNpaPrinter(kClient, 1, nullptr, 6, buffer, 64, &number); },
    [] { return QvnExchangeNpaPrinter(kClient, 1, kPacket, 6, nullptr, 64, &number); },
    [] { return QvnExchangeNpaPrinter(kClient, 1, kPacket, 6, buffer, 64, nullptr); }}},
  {"GetCachePrinter", 6, 6, [](auto h) { return QvnGetCachePrinter(kClient, h, buffer, 64, &number); },
   {[] { return QvnGetCachePrinter(kClient, 1, nullptr, 64, &number); },
    [] { return QvnGetCachePrinter(kClient, 1, buffer, 64, nullptr); }}},
  {"GetCurrentStatePrinter", 6, 6, [](auto h) { return QvnGetCurrentStatePrinter(kClient, h, &number); },
   {[] { return QvnGetCurrentStatePrinter(kClient, 0, nullptr); }}},
  {"GetLongPrinter", 6, 1168, [](auto h) { return QvnGetLongPrinter(kClient, h, kLongKey, &number); },
   {[] { return QvnGetLongPrinter(kClient, 1, nullptr, &number); },
    [] { return QvnGetLongPrinter(kClient, 1, kLongKey, nullptr); }}},
  {"GetStringPrinter", 6, 1168, [](auto h) { return QvnGetStringPrinter(kClient, h, kKey, text, 64, &number); },
   {[] { return QvnGetStringPrinter(kClient, 1, nullptr, text, 64, &number); },
    [] { return QvnGetStringPrinter(kClient, 1, kKey, nullptr, 64, &number); },
    [] { return QvnGetStringPrinter(kClient, 1, kKey, text, 0, &number); },
    [] { return QvnGetStringPrinter(kClient, 1, kKey, text, 64, nullptr); }}},
  {"GetWideStringPrinter", 6, 1168, [](auto h) { return QvnGetWideStringPrinter(kClient, h, kKey, buffer, 64, &number); },
   {[] { return QvnGetWideStringPrinter(kClient, 1, nullptr, buffer, 64, &number); },
    [] { return QvnGetWideStringPrinter(kClient, 1, kKey, nullptr, 64, &number); },
    [] { return QvnGetWideStringPrinter(kClient, 1, kKey, buffer, 0, &number); },
    [] { return QvnGetWideStringPrinter(kClient, 1, kKey, buffer, 64, nullptr); }}},
  {"GetByteArrayPrinter", 6, 1168, [](auto h) { return QvnGetByteArrayPrinter(kClient, h, kKey, buffer, 0, &number); },
   {[] { return QvnGetByteArrayPrinter(kClient, 1, nullptr, buffer, 64, &number); },
    [] { return QvnGetByteArrayPrinter(kClient, 1, kKey, nullptr, 64, &number); },
    [] { return QvnGetByteArrayPrinter(kClient, 1, kKey, buffer, 64, nullptr); }}},
  {"SetLongPrinter", 6, 6, [](auto h) { return QvnSetLongPrinter(kClient, h, kKey, 1); },
   {[] { return QvnSetLongPrinter(kClient, 1, nullptr, 1); }}},
  {"SetStringPrinter", 6, 6, [](auto h) { return QvnSetStringPrinter(kClient, h, kKey, "x", 1); },
   {[] { return QvnSetStringPrinter(kClient, 1, nullptr, "x", 1); },
    [] { return QvnSetStringPrinter(kClient, 1, kKey, nullptr, 1); }}},
  {"SetByteArrayPrinter", 6, 6, [](auto h) { return QvnSetByteArrayPrinter(kClient, h, kKey, buffer, 1); },
   {[] { return QvnSetByteArrayPrinter(kClient, 1, nullptr, buffer, 1); },
    [] { return QvnSetByteArrayPrinter(kClient, 1, kKey, nullptr, 1); },
    [] { return QvnSetByteArrayPrinter(kClient, 1, kKey, buffer, 0); }}},
  {"RegisterForAlertsPrinter", 6, 6, [](auto h) { return QvnRegisterForAlertsPrinter(kClient, h, 1, alert); },
   {[] { return QvnRegisterForAlertsPrinter(kClient, 1, 1, nullptr); },
    [] { return QvnRegisterForAlertsPrinter(0, 1, 1, alert); }}},
  {"UnregisterForAlertsPrinter", 6, 6, [](auto h) { return QvnUnregisterForAlertsPrinter(kClient, h); }, {}},
  {"RegisterForNotificationsPrinter", 6, 6, [](auto h) { return QvnRegisterForNotificationsPrinter(kClient, h, 1, notification); },
   {[] { return QvnRegisterForNotificationsPrinter(kClient, 1, 1, nullptr); },
    [] { return QvnRegisterForNotificationsPrinter(0, 1, 1, notification); }}},
  {"UnregisterForNotificationsPrinter", 6, 6, [](auto h) { return QvnUnregisterForNotificationsPrinter(kClient, h); }, {}},

  {"OpenScanner", 6, 6, [](auto h) { return QvnOpenScanner(kClient, h); }, {}},
  {"CloseScanner", 6, 6, [](auto h) { return QvnCloseScanner(kClient, h); }, {}},
  {"DeleteScanner", 6, 2, [](auto h) { return QvnDeleteScanner(kClient, h); }, {}},
  {"StartJobScanner", 6, 6, [](auto h) { return QvnStartJobScanner(kClient, h, nullptr); }, {}},
  {"EndJobScanner", 6, 6, [](auto h) { return QvnEndJobScanner(kClient, h); }, {}},
  {"CancelJobScanner", 6, 6, [](auto h) { return QvnCancelJobScanner(kClient, h); }, {}},
  {"ExchangeDataScanner", 6, 6, [](auto h) { return QvnExchangeDataScanner(kClient, h, kPacket, 6, buffer, 64, &number); },
   {[] { return QvnExchangeDataScanner(kClient, 1, nullptr, 6, buffer, 64, &number); },
    [] { return QvnExchangeDataScanner(kClient, 1, kPacket, 0, buffer, 64, &number); },
    [] { return QvnExchangeDataScanner(kClient, 1, kPacket, 6, nullptr, 64, &number); },
    [] { return QvnExchangeDataScanner(kClient, 1, kPacket, 6, buffer, 0, &number); },
    [] { return QvnExchangeDataScanner(kClient, 1, kPacket, 6, buffer, 64, nullptr); }}},
  {"GetStringScanner", 6, 1168, [](auto h) { return QvnGetStringScanner(kClient, h, kKey, text, 64, &number); },
   {[] { return QvnGetStringScanner(kClient, 1, nullptr, text, 64, &number); },
    [] { return QvnGetStringScanner(kClient, 1, kKey, nullptr, 64, &number); },
    [] { return QvnGetStringScanner(kClient, 1, kKey, text, 0, &number); },
    [] { return QvnGetStringScanner(kClient, 1, kKey, text, 64, nullptr); }}},
  {"GetLongScanner", 6, 1168, [](auto h) { return QvnGetLongScanner(kClient, h, kLongKey, &number); },
   {[] { return QvnGetLongScanner(kClient, 1, nullptr, &number); },
    [] { return QvnGetLongScanner(kClient, 1, kLongKey, nullptr); }}},
  {"GetCurrentStateScanner", 6, 6, [](auto h) { return QvnGetCurrentStateScanner(kClient, h, &number); },
   {[] { return QvnGetCurrentStateScanner(kClient, 0, nullptr); }}},
  {"SetJobStringScanner", 6, 6, [](auto h) { return QvnSetJobStringScanner(kClient, h, "k", "v"); },
   {[] { return QvnSetJobStringScanner(kClient, 1, nullptr, "v"); },
    [] { return QvnSetJobStringScanner(kClient, 1, "k", nullptr); }}},
  {"SetJobLongScanner", 6, 6, [](auto h) { return QvnSetJobLongScanner(kClient, h, "k", 1); },
   {[] { return QvnSetJobLongScanner(kClient, 1, nullptr, 1); },
    [] { return QvnSetJobLongScanner(kClient, 1, "k", 0); }}},
  {"RegisterForAsyncDataScanner", 6, 0, [](auto h) { return QvnRegisterForAsyncDataScanner(kClient, h, 1, scanData); }, {}},
  {"UnregisterForAsyncDataScanner", 6, 0, [](auto h) { return QvnUnregisterForAsyncDataScanner(kClient, h); }, {}},

  {"OpenHid", 6, 6, [](auto h) { return QvnOpenHid(kClient, h); }, {}},
  {"CloseHid", 6, 6, [](auto h) { return QvnCloseHid(kClient, h); }, {}},
  {"DeleteHid", 6, 2, [](auto h) { return QvnDeleteHid(kClient, h); }, {}},
  {"RegisterForReportsHid", 6, 6, [](auto h) { return QvnRegisterForReportsHid(kClient, h, report); }, {}},
  {"UnregisterForReportsHid", 6, 0, [](auto h) { return QvnUnregisterForReportsHid(kClient, h); }, {}},
  {"RegisterForNotificationsHid", 6, 0, [](auto h) { return QvnRegisterForNotificationsHid(kClient, h, notification); },
   {[] { return QvnRegisterForNotificationsHid(kClient, 1, nullptr); },
    [] { return QvnRegisterForNotificationsHid(0, 1, notification); }}},
  {"UnregisterForNotificationsHid", 6, 0, [](auto h) { return QvnUnregisterForNotificationsHid(kClient, h); },
   {[] { return QvnUnregisterForNotificationsHid(0, 1); }}},
  {"GetLongHid", 6, 1168, [](auto h) { return QvnGetLongHid(kClient, h, kLongKey, &number); },
   {[] { return QvnGetLongHid(kClient, 0, nullptr, &number); },
    [] { return QvnGetLongHid(kClient, 0, kLongKey, nullptr); }}},
  {"GetStringHid", 6, 1168, [](auto h) { return QvnGetStringHid(kClient, h, kKey, text, 64, &number); },
   {[] { return QvnGetStringHid(kClient, 1, nullptr, text, 64, &number); },
    [] { return QvnGetStringHid(kClient, 1, kKey, nullptr, 64, &number); },
    [] { return QvnGetStringHid(kClient, 1, kKey, text, 0, &number); },
    [] { return QvnGetStringHid(kClient, 1, kKey, text, 64, nullptr); }}},
  {"GetCurrentStateHid", 6, 6, [](auto h) { return QvnGetCurrentStateHid(kClient, h, &number); },
   {[] { return QvnGetCurrentStateHid(kClient, 0, nullptr); }}},
  };
  return cases;
}

// The functions without a device: each call gives 87.
const std::vector<std::pair<const char*, std::function<std::uint32_t()>>>& otherCases() {
  static const std::vector<std::pair<const char*, std::function<std::uint32_t()>>> cases = {
  {"EnumPrinters", [] { return QvnEnumPrinters(kClient, nullptr, "", deviceFound); }},
  {"EnumPrinters", [] { return QvnEnumPrinters(kClient, "ALL_TRANSPORT", "", nullptr); }},
  {"EnumScanners", [] { return QvnEnumScanners(kClient, nullptr, "", deviceFound); }},
  {"EnumScanners", [] { return QvnEnumScanners(kClient, "ALL_TRANSPORT", "", nullptr); }},
  {"EnumHids", [] { return QvnEnumHids(kClient, nullptr, "", deviceFound); }},
  {"EnumHids", [] { return QvnEnumHids(kClient, "ALL_TRANSPORT", "", nullptr); }},
  {"EnumWindowsScanners", [] { return QvnEnumWindowsScanners(kClient, nullptr, queueFound); }},
  {"EnumWindowsScanners", [] { return QvnEnumWindowsScanners(kClient, "ALL_TRANSPORT", nullptr); }},
  {"EnumWindowsHids", [] { return QvnEnumWindowsHids(kClient, nullptr, queueFound); }},
  {"EnumWindowsHids", [] { return QvnEnumWindowsHids(kClient, "ALL_TRANSPORT", nullptr); }},
  {"EnumSpecificPrinter", [] { return QvnEnumSpecificPrinter(kClient, nullptr, &number); }},
  {"EnumSpecificPrinter", [] { return QvnEnumSpecificPrinter(kClient, "P", nullptr); }},
  {"EnumSpecificScanner", [] { return QvnEnumSpecificScanner(kClient, nullptr, &number); }},
  {"EnumSpecificScanner", [] { return QvnEnumSpecificScanner(kClient, "P", nullptr); }},
  {"EnumSpecificHid", [] { return QvnEnumSpecificHid(kClient, nullptr, &number); }},
  {"EnumSpecificHid", [] { return QvnEnumSpecificHid(kClient, "P", nullptr); }},
  {"Discovery", [] { return QvnDiscovery(kClient, nullptr, ""); }},
  {"ValidatePortName", [] { return QvnValidatePortName(kClient, nullptr); }},
  {"GetDiscoveryDefaults", [] { return QvnGetDiscoveryDefaults(kClient, nullptr, text, 64, &number); }},
  {"GetDiscoveryDefaults", [] { return QvnGetDiscoveryDefaults(kClient, "FAKE", nullptr, 64, &number); }},
  {"GetDiscoveryDefaults", [] { return QvnGetDiscoveryDefaults(kClient, "FAKE", text, 0, &number); }},
  {"GetDiscoveryDefaults", [] { return QvnGetDiscoveryDefaults(kClient, "FAKE", text, 64, nullptr); }},
  {"SetDiscoveryDefaults", [] { return QvnSetDiscoveryDefaults(kClient, nullptr, ""); }},
  {"SetDiscoveryDefaults", [] { return QvnSetDiscoveryDefaults(kClient, "FAKE", nullptr); }},
  {"AddTransport", [] { return QvnAddTransport(nullptr); }},
  {"RemoveTransport", [] { return QvnRemoveTransport(nullptr); }},
  {"GetHostInfo", [] { return QvnGetHostInfo(kClient, nullptr, text, 64, &number); }},
  {"GetHostInfo", [] { return QvnGetHostInfo(kClient, kKey, nullptr, 64, &number); }},
  {"GetHostInfo", [] { return QvnGetHostInfo(kClient, kKey, text, 0, &number); }},
  {"GetHostInfo", [] { return QvnGetHostInfo(kClient, kKey, text, 64, nullptr); }},
  {"SetHostInfo", [] { return QvnSetHostInfo(kClient, nullptr, "v", 1); }},
  {"SetHostInfo", [] { return QvnSetHostInfo(kClient, kKey, nullptr, 1); }},
  {"SetHostInfo", [] { return QvnSetHostInfo(kClient, kKey, "v", 0); }},
  {"SetClientInfo", [] { return QvnSetClientInfo(kClient, nullptr, "v"); }},
  {"SetClientInfo", [] { return QvnSetClientInfo(kClient, "k", nullptr); }},
  };
  return cases;
}
// clang-format on

class ArgumentsTest : public LibraryTest {};

TEST_F(ArgumentsTest, HandlesThatNameNoDeviceAndMissingArguments) {
  for (const Case& c : deviceCases()) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.call(0), c.zeroHandle);
    EXPECT_EQ(c.call(kUnknown), c.unknownHandle);
    for (std::size_t i = 0; i < c.missing.size(); ++i) EXPECT_EQ(c.missing[i](), 87u) << "argument " << i;
  }
  for (const auto& [name, call] : otherCases()) EXPECT_EQ(call(), 87u) << name;
  EXPECT_EQ(QvnRegisterForReportsHid(kClient, 1, nullptr), 1u) << "not 87";
  EXPECT_EQ(QvnGetClientId(nullptr), 87u);
  EXPECT_TRUE(fake.calls().empty()) << "nothing is forwarded";
}

TEST(NotInitialised, EveryTracedFunctionGivesOneAndDoesNothing) {
  for (int round = 0; round < 2; ++round) {
    for (const Case& c : deviceCases()) EXPECT_EQ(c.call(kUnknown), 1u) << c.name;
    for (const auto& [name, call] : otherCases()) EXPECT_EQ(call(), 1u) << name;
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
