#include "sweeps/call_table.h"

#include <tuple>
#include <type_traits>

#include "qvn/transport/attributes.h"
#include "sweeps/stage.h"

namespace qvn::test {
namespace {

constexpr Company kTogether = Company::Together;
constexpr Company kAlone = Company::Alone;
constexpr Company kGlobal = Company::Global;

using Numbers = std::vector<std::uint32_t>;
const Numbers kPrinters = {kPrinter, kOtherPrinter, kBpdPrinter};
const Numbers kScanners = {kScanner, kBpdScanner, kOtherBpdScanner};
const Numbers kHids = {kHid, kOtherHid};

constexpr std::uint8_t kEndOfJob[] = {0x1B, 0x2A, 0x82, 0, 0, 0, 0, 0xAC};
constexpr std::uint8_t kPacket[] = {0xA5, 0, 3, 0x50, 2, 0};
constexpr std::uint8_t kCommand[] = {0x1B, 'S', 'V', 0, 0, 0, 0, 0};
constexpr const char* kLong = attribute::kHandle;
constexpr const char* kText = attribute::kPortname;
constexpr const char* kBytes = attribute::kNpaRevisionLevel;
constexpr const char* kPin = attribute::kPinNumber;
constexpr const char* kAll = "ALL_TRANSPORT";
constexpr const char* kFake = FakeTransport::kName;

// Where a function leaves what it finds: the calling thread's own.
struct Out {
  std::uint8_t bytes[1024];
  char text[256];
  std::uint32_t number;
};
thread_local Out out;
struct {
  operator std::uint8_t*() const { return out.bytes; }
} constexpr outBytes;
struct {
  operator char*() const { return out.text; }
} constexpr outText;
struct {
  operator std::uint32_t*() const { return &out.number; }
} constexpr outNumber;

// The call with one of the arguments at these places missing, each in turn: zero or null.
template <std::size_t... kPlaces, typename... Parameters, typename... Arguments>
std::vector<std::function<std::uint32_t()>> missing(std::uint32_t (*function)(Parameters...),
                                                    Arguments... arguments) {
  [[maybe_unused]] const auto without = [=]<std::size_t kPlace>(std::integral_constant<std::size_t, kPlace>) {
    return [=] {
      std::tuple<Parameters...> given(static_cast<Parameters>(arguments)...);
      std::get<kPlace>(given) = {};
      return std::apply(function, given);
    };
  };
  return {without(std::integral_constant<std::size_t, kPlaces>())...};
}

// A function of a device: what it gives for a handle that no store holds, the arguments behind the client's
// identifier and the handle, and the places of those that it requires.
template <std::size_t... kPlaces, typename... Parameters, typename... Rest>
ExportedCall of(const char* name, Company company, const Numbers& handles, const Numbers& allowed,
                std::uint32_t unknown, std::uint32_t (*function)(std::uint32_t, std::uint32_t, Parameters...),
                Rest... rest) {
  const auto call = [=](std::uint32_t handle) {
    return function(1, handle, static_cast<Parameters>(rest)...);
  };
  return {name, company, handles, allowed, unknown, missing<kPlaces...>(function, 1, 1, rest...), call};
}

// A function without a device, its arguments, and the places of those that it requires.
template <std::size_t... kPlaces, typename... Parameters, typename... Arguments>
ExportedCall one(const char* name, Company company, const Numbers& allowed,
                 std::uint32_t (*function)(Parameters...), Arguments... arguments) {
  const auto call = [=](std::uint32_t) { return function(static_cast<Parameters>(arguments)...); };
  return {name, company, {0}, allowed, 0, missing<kPlaces...>(function, arguments...), call};
}

}  // namespace

const std::vector<ExportedCall>& exportedCalls() {
  static const std::vector<ExportedCall> calls = {
      of("OpenPrinter", kAlone, kPrinters, {0}, 6, QvnOpenPrinter),
      of("ClosePrinter", kAlone, kPrinters, {0}, 6, QvnClosePrinter),
      of("DeletePrinter", kTogether, kPrinters, {170}, 2, QvnDeletePrinter),
      of<3>("StartJobPrinter", kAlone, kPrinters, {0, 5, 170}, 6, QvnStartJobPrinter, 1, "q", "h", "j", "u"),
      of<2, 3, 4>("WritePrinter", kTogether, kPrinters, {0, 5, kFailure, 170}, 6, QvnWritePrinter, kEndOfJob,
                  8, outNumber),
      of("EndJobPrinter", kAlone, kPrinters, {0, 5, 170}, 6, QvnEndJobPrinter),
      of("CancelJobPrinter", kAlone, kPrinters, {0}, 0, QvnCancelJobPrinter),
      of<2, 4, 6>("ExchangeNpaPrinter", kTogether, kPrinters, {0, 1}, 6, QvnExchangeNpaPrinter, kPacket, 6,
                  outBytes, 64, outNumber),
      of<2, 4>("GetCachePrinter", kTogether, kPrinters, {0, 1, 170}, 6, QvnGetCachePrinter, outBytes, 1024,
               outNumber),
      of("GetCurrentStatePrinter", kTogether, kPrinters, {0}, 6, QvnGetCurrentStatePrinter, outNumber),
      of<2, 3>("GetLongPrinter", kTogether, kPrinters, {0}, 1168, QvnGetLongPrinter, kLong, outNumber),
      of<2, 3, 4, 5>("GetStringPrinter", kTogether, kPrinters, {0}, 1168, QvnGetStringPrinter, kText, outText,
                     64, outNumber),
      of<2, 3, 4, 5>("GetWideStringPrinter", kTogether, kPrinters, {0}, 1168, QvnGetWideStringPrinter, kText,
                     outBytes, 64, outNumber),
      of<2, 3, 5>("GetByteArrayPrinter", kTogether, kPrinters, {0, 1168}, 1168, QvnGetByteArrayPrinter,
                  kBytes, outBytes, 64, outNumber),
      of<2>("SetLongPrinter", kTogether, kPrinters, {0, 170}, 6, QvnSetLongPrinter, attribute::kTrueEndOfJob,
            1),
      of<2, 3>("SetStringPrinter", kTogether, kPrinters, {0, 170}, 6, QvnSetStringPrinter,
               attribute::kNickname, "name", 4),
      of<2, 3, 4>("SetByteArrayPrinter", kTogether, kPrinters, {0, 170}, 6, QvnSetByteArrayPrinter, kBytes,
                  kPacket, 3),
      of<0, 3>("RegisterForAlertsPrinter", kAlone, kPrinters, {0, 1}, 6, QvnRegisterForAlertsPrinter, kAlerts,
               heard::alert),
      of("UnregisterForAlertsPrinter", kAlone, kPrinters, {0}, 6, QvnUnregisterForAlertsPrinter),
      of<0, 3>("RegisterForNotificationsPrinter", kAlone, kPrinters, {0}, 6,
               QvnRegisterForNotificationsPrinter, 1, heard::notification),
      of("UnregisterForNotificationsPrinter", kAlone, kPrinters, {0}, 6,
         QvnUnregisterForNotificationsPrinter),

      of("OpenScanner", kAlone, kScanners, {0}, 6, QvnOpenScanner),
      of("CloseScanner", kAlone, kScanners, {0}, 6, QvnCloseScanner),
      of("DeleteScanner", kTogether, kScanners, {170}, 2, QvnDeleteScanner),
      of("StartJobScanner", kAlone, kScanners, {0, 1, 170}, 6, QvnStartJobScanner, nullptr),
      of("EndJobScanner", kAlone, kScanners, {0, 1, 170}, 6, QvnEndJobScanner),
      of("CancelJobScanner", kAlone, kScanners, {0, 1, 170}, 6, QvnCancelJobScanner),
      of<2, 3, 4, 5, 6>("ExchangeDataScanner", kTogether, kScanners, {0, 1, 170}, 6, QvnExchangeDataScanner,
                        kCommand, 8, outBytes, 64, outNumber),
      of<2, 3, 4, 5>("GetStringScanner", kTogether, kScanners, {0}, 1168, QvnGetStringScanner, kText, outText,
                     64, outNumber),
      of<2, 3>("GetLongScanner", kTogether, kScanners, {0}, 1168, QvnGetLongScanner, kLong, outNumber),
      of("GetCurrentStateScanner", kTogether, kScanners, {0, 1}, 6, QvnGetCurrentStateScanner, outNumber),
      of<2, 3>("SetJobStringScanner", kTogether, kScanners, {0, 1, 170}, 6, QvnSetJobStringScanner, "key",
               "value"),
      of<2, 3>("SetJobLongScanner", kTogether, kScanners, {0, 1, 170}, 6, QvnSetJobLongScanner, "key", 1),
      of("RegisterForAsyncDataScanner", kAlone, kScanners, {0}, 0, QvnRegisterForAsyncDataScanner, 0x7000,
         heard::scan),
      of("UnregisterForAsyncDataScanner", kAlone, kScanners, {0}, 0, QvnUnregisterForAsyncDataScanner),

      of("OpenHid", kAlone, kHids, {0}, 6, QvnOpenHid),
      of("CloseHid", kAlone, kHids, {0}, 6, QvnCloseHid),
      of("DeleteHid", kTogether, kHids, {170}, 2, QvnDeleteHid),
      of("RegisterForReportsHid", kAlone, kHids, {0}, 6, QvnRegisterForReportsHid, heard::report),
      of("UnregisterForReportsHid", kAlone, kHids, {0}, 0, QvnUnregisterForReportsHid),
      of<0, 2>("RegisterForNotificationsHid", kAlone, kHids, {0}, 0, QvnRegisterForNotificationsHid,
               heard::notification),
      of<0>("UnregisterForNotificationsHid", kAlone, kHids, {0}, 0, QvnUnregisterForNotificationsHid),
      of("GetLongHid", kTogether, kHids, {0}, 1168, QvnGetLongHid, kLong, outNumber),
      of<2, 3, 4, 5>("GetStringHid", kTogether, kHids, {0}, 1168, QvnGetStringHid, kText, outText, 64,
                     outNumber),
      of("GetCurrentStateHid", kTogether, kHids, {0}, 6, QvnGetCurrentStateHid, outNumber),

      one<1, 3>("EnumPrinters", kTogether, {0}, QvnEnumPrinters, 1, kAll, nullptr, heard::device),
      one<1, 3>("EnumScanners", kTogether, {0}, QvnEnumScanners, 1, kAll, nullptr, heard::device),
      one<1, 3>("EnumHids", kTogether, {0}, QvnEnumHids, 1, kAll, nullptr, heard::device),
      one<1, 2>("EnumWindowsScanners", kTogether, {0}, QvnEnumWindowsScanners, 1, kFake, heard::queue),
      one<1, 2>("EnumWindowsHids", kTogether, {0}, QvnEnumWindowsHids, 1, kFake, heard::queue),
      one<1, 2>("EnumSpecificPrinter", kTogether, {0}, QvnEnumSpecificPrinter, 1, "PORT7", outNumber),
      one<1, 2>("EnumSpecificScanner", kTogether, {0}, QvnEnumSpecificScanner, 1, "PORT407", outNumber),
      one<1, 2>("EnumSpecificHid", kTogether, {0}, QvnEnumSpecificHid, 1, "PORT807", outNumber),
      one<1>("Discovery", kAlone, {0}, QvnDiscovery, 1, kFake, ""),
      one<1>("ValidatePortName", kTogether, {52}, QvnValidatePortName, 1, "PORT7"),
      one<1, 2, 3, 4>("GetDiscoveryDefaults", kTogether, {1}, QvnGetDiscoveryDefaults, 1, kFake, outText, 64,
                      outNumber),
      one<1, 2>("SetDiscoveryDefaults", kTogether, {1}, QvnSetDiscoveryDefaults, 1, kFake, "x"),

      one("GetClientId", kTogether, {0}, QvnGetClientId, outNumber),
      one<1, 2>("SetClientInfo", kTogether, {0}, QvnSetClientInfo, 1, "key", "value"),
      one<1, 2, 3, 4>("GetHostInfo", kTogether, {0}, QvnGetHostInfo, 1, kPin, outText, 64, outNumber),
      one<1, 2, 3>("SetHostInfo", kTogether, {0}, QvnSetHostInfo, 1, kPin, "1234", 4),
      one("Suspend", kTogether, {0}, QvnSuspend),
      one("Resume", kTogether, {0}, QvnResume),
      one("AddMonitor", kTogether, {2}, QvnAddMonitor),
      one<0>("RemoveTransport", kTogether, {126}, QvnRemoveTransport, "libnone.so"),
      one<0>("AddTransport", kAlone, {0}, QvnAddTransport, FakeTransport::module()),
      one("Initialize", kGlobal, {0}, QvnInitialize),
      one("Uninitialize", kGlobal, {170}, QvnUninitialize),
      one("Install", kGlobal, {0}, QvnInstall),
      one("Uninstall", kGlobal, {0}, QvnUninstall),
  };
  return calls;
}

}  // namespace qvn::test
