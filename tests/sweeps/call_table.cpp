#include "sweeps/call_table.h"

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

// A function of a device, and the arguments behind the client's identifier and the handle.
template <typename... Parameters, typename... Rest>
ExportedCall of(const char* name, Company company, const Numbers& handles, const Numbers& allowed,
                std::uint32_t (*function)(std::uint32_t, std::uint32_t, Parameters...), Rest... rest) {
  return {name, company, handles, allowed,
          [=](std::uint32_t handle) { return function(1, handle, static_cast<Parameters>(rest)...); }};
}

// A function without a device, and its arguments.
template <typename... Parameters, typename... Arguments>
ExportedCall one(const char* name, Company company, const Numbers& allowed,
                 std::uint32_t (*function)(Parameters...), Arguments... arguments) {
  return {name, company, {0}, allowed, [=](std::uint32_t) {
            return function(static_cast<Parameters>(arguments)...);
          }};
}

std::uint32_t write(std::uint32_t clientId, std::uint32_t handle) {
  const auto* const data = reinterpret_cast<const std::uint8_t*>(kEndOfJob.data());
  return QvnWritePrinter(clientId, handle, data, static_cast<std::uint32_t>(kEndOfJob.size()), outNumber);
}
std::uint32_t addTransport() { return QvnAddTransport(Stage::transportModule().c_str()); }

}  // namespace

const std::vector<ExportedCall>& exportedCalls() {
  static const std::vector<ExportedCall> calls = {
      of("OpenPrinter", kAlone, kPrinters, {0}, QvnOpenPrinter),
      of("ClosePrinter", kAlone, kPrinters, {0}, QvnClosePrinter),
      of("DeletePrinter", kTogether, kPrinters, {170}, QvnDeletePrinter),
      of("StartJobPrinter", kAlone, kPrinters, {0, 5, 170}, QvnStartJobPrinter, 1, "q", "h", "j", "u"),
      of("WritePrinter", kTogether, kPrinters, {0, 5, kFailure, 170}, write),
      of("EndJobPrinter", kAlone, kPrinters, {0, 5, 170}, QvnEndJobPrinter),
      of("CancelJobPrinter", kAlone, kPrinters, {0}, QvnCancelJobPrinter),
      of("ExchangeNpaPrinter", kTogether, kPrinters, {0, 1}, QvnExchangeNpaPrinter, kPacket, 6, outBytes, 64,
         outNumber),
      of("GetCachePrinter", kTogether, kPrinters, {0, 1, 170}, QvnGetCachePrinter, outBytes, 1024, outNumber),
      of("GetCurrentStatePrinter", kTogether, kPrinters, {0}, QvnGetCurrentStatePrinter, outNumber),
      of("GetLongPrinter", kTogether, kPrinters, {0}, QvnGetLongPrinter, kLong, outNumber),
      of("GetStringPrinter", kTogether, kPrinters, {0}, QvnGetStringPrinter, kText, outText, 64, outNumber),
      of("GetWideStringPrinter", kTogether, kPrinters, {0}, QvnGetWideStringPrinter, kText, outBytes, 64,
         outNumber),
      of("GetByteArrayPrinter", kTogether, kPrinters, {0, 1168}, QvnGetByteArrayPrinter, kBytes, outBytes, 64,
         outNumber),
      of("SetLongPrinter", kTogether, kPrinters, {0, 170}, QvnSetLongPrinter, attribute::kTrueEndOfJob, 1),
      of("SetStringPrinter", kTogether, kPrinters, {0, 170}, QvnSetStringPrinter, attribute::kNickname,
         "name", 4),
      of("SetByteArrayPrinter", kTogether, kPrinters, {0, 170}, QvnSetByteArrayPrinter, kBytes, kPacket, 3),
      of("RegisterForAlertsPrinter", kAlone, kPrinters, {0, 1}, QvnRegisterForAlertsPrinter, kAlerts,
         heard::alert),
      of("UnregisterForAlertsPrinter", kAlone, kPrinters, {0}, QvnUnregisterForAlertsPrinter),
      of("RegisterForNotificationsPrinter", kAlone, kPrinters, {0}, QvnRegisterForNotificationsPrinter, 1,
         heard::notification),
      of("UnregisterForNotificationsPrinter", kAlone, kPrinters, {0}, QvnUnregisterForNotificationsPrinter),

      of("OpenScanner", kAlone, kScanners, {0}, QvnOpenScanner),
      of("CloseScanner", kAlone, kScanners, {0}, QvnCloseScanner),
      of("DeleteScanner", kTogether, kScanners, {170}, QvnDeleteScanner),
      of("StartJobScanner", kAlone, kScanners, {0, 1, 170}, QvnStartJobScanner, nullptr),
      of("EndJobScanner", kAlone, kScanners, {0, 1, 170}, QvnEndJobScanner),
      of("CancelJobScanner", kAlone, kScanners, {0, 1, 170}, QvnCancelJobScanner),
      of("ExchangeDataScanner", kTogether, kScanners, {0, 1, 170}, QvnExchangeDataScanner, kCommand, 8,
         outBytes, 64, outNumber),
      of("GetStringScanner", kTogether, kScanners, {0}, QvnGetStringScanner, kText, outText, 64, outNumber),
      of("GetLongScanner", kTogether, kScanners, {0}, QvnGetLongScanner, kLong, outNumber),
      of("GetCurrentStateScanner", kTogether, kScanners, {0, 1}, QvnGetCurrentStateScanner, outNumber),
      of("SetJobStringScanner", kTogether, kScanners, {0, 1, 170}, QvnSetJobStringScanner, "key", "value"),
      of("SetJobLongScanner", kTogether, kScanners, {0, 1, 170}, QvnSetJobLongScanner, "key", 1),
      of("RegisterForAsyncDataScanner", kAlone, kScanners, {0}, QvnRegisterForAsyncDataScanner, 0x7000,
         heard::scan),
      of("UnregisterForAsyncDataScanner", kAlone, kScanners, {0}, QvnUnregisterForAsyncDataScanner),

      of("OpenHid", kAlone, kHids, {0}, QvnOpenHid),
      of("CloseHid", kAlone, kHids, {0}, QvnCloseHid),
      of("DeleteHid", kTogether, kHids, {170}, QvnDeleteHid),
      of("RegisterForReportsHid", kAlone, kHids, {0}, QvnRegisterForReportsHid, heard::report),
      of("UnregisterForReportsHid", kAlone, kHids, {0}, QvnUnregisterForReportsHid),
      of("RegisterForNotificationsHid", kAlone, kHids, {0}, QvnRegisterForNotificationsHid,
         heard::notification),
      of("UnregisterForNotificationsHid", kAlone, kHids, {0}, QvnUnregisterForNotificationsHid),
      of("GetLongHid", kTogether, kHids, {0}, QvnGetLongHid, kLong, outNumber),
      of("GetStringHid", kTogether, kHids, {0}, QvnGetStringHid, kText, outText, 64, outNumber),
      of("GetCurrentStateHid", kTogether, kHids, {0}, QvnGetCurrentStateHid, outNumber),

      one("EnumPrinters", kTogether, {0}, QvnEnumPrinters, 1, kAll, nullptr, heard::device),
      one("EnumScanners", kTogether, {0}, QvnEnumScanners, 1, kAll, nullptr, heard::device),
      one("EnumHids", kTogether, {0}, QvnEnumHids, 1, kAll, nullptr, heard::device),
      one("EnumWindowsScanners", kTogether, {0}, QvnEnumWindowsScanners, 1, kFake, heard::queue),
      one("EnumWindowsHids", kTogether, {0}, QvnEnumWindowsHids, 1, kFake, heard::queue),
      one("EnumSpecificPrinter", kTogether, {0}, QvnEnumSpecificPrinter, 1, "PORT7", outNumber),
      one("EnumSpecificScanner", kTogether, {0}, QvnEnumSpecificScanner, 1, "PORT407", outNumber),
      one("EnumSpecificHid", kTogether, {0}, QvnEnumSpecificHid, 1, "PORT807", outNumber),
      one("Discovery", kAlone, {0}, QvnDiscovery, 1, kFake, ""),
      one("ValidatePortName", kTogether, {52}, QvnValidatePortName, 1, "PORT7"),
      one("GetDiscoveryDefaults", kTogether, {1}, QvnGetDiscoveryDefaults, 1, kFake, outText, 64, outNumber),
      one("SetDiscoveryDefaults", kTogether, {1}, QvnSetDiscoveryDefaults, 1, kFake, "x"),

      one("GetClientId", kTogether, {0}, QvnGetClientId, outNumber),
      one("SetClientInfo", kTogether, {0}, QvnSetClientInfo, 1, "key", "value"),
      one("GetHostInfo", kTogether, {0}, QvnGetHostInfo, 1, kPin, outText, 64, outNumber),
      one("SetHostInfo", kTogether, {0}, QvnSetHostInfo, 1, kPin, "1234", 4),
      one("Suspend", kTogether, {0}, QvnSuspend),
      one("Resume", kTogether, {0}, QvnResume),
      one("AddMonitor", kTogether, {2}, QvnAddMonitor),
      one("RemoveTransport", kTogether, {126}, QvnRemoveTransport, "libnone.so"),
      one("AddTransport", kAlone, {0}, addTransport),
      one("Initialize", kGlobal, {0}, QvnInitialize),
      one("Uninitialize", kGlobal, {170}, QvnUninitialize),
      one("Install", kGlobal, {0}, QvnInstall),
      one("Uninstall", kGlobal, {0}, QvnUninstall),
  };
  return calls;
}

}  // namespace qvn::test
