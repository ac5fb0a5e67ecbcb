// Packets as clients and printers send them: the packet tests, what commands read from replies, alerts and
// the status cache.
#include <fuzzer/FuzzedDataProvider.h>

#include "common/exception.h"
#include "fuzz/check.h"
#include "fuzz/silent_logger.h"
#include "npa/alert_registration.h"
#include "npa/dc_summary_command.h"
#include "npa/job_commands.h"
#include "npa/npa_packet.h"
#include "printer/cpd/cpd_printer_alert.h"
#include "printer/cpd/cpd_printer_cache.h"

namespace {

using namespace qvn;

void readPacket(const Data& packet) {
  const NpaPacket npa(packet);
  if (npa.isValidRequest()) QVN_FUZZ_CHECK(npa.isNpa() && npa.isLengthConsistent());
  if (npa.isAllowedFromClient()) QVN_FUZZ_CHECK(npa.isValidRequest());
  if (npa.isAlert() || npa.isRejected()) QVN_FUZZ_CHECK(npa.isNpa());
}

void readReply(const Data& request, const Data& reply) {
  // What is no packet answers nothing.
  if (NpaPacket(reply).isReplyTo(NpaPacket(request))) {
    QVN_FUZZ_CHECK(NpaPacket(request).isNpa() && NpaPacket(reply).isNpa());
  }
  const DcSummaryCommand summary;
  std::uint32_t size = 0x10000;
  DcSummaryCommand::Revisions revisions{};
  if (summary.getMaxPacketSize(reply, size)) {
    QVN_FUZZ_CHECK(size <= 0xFFFF && reply.getLength() >= 31);
  } else {
    QVN_FUZZ_CHECK(size == 0x10000);
  }
  summary.getNpaVersions(reply, revisions);
  std::uint32_t id = 0x10000;
  QVN_FUZZ_CHECK(StartJobCommand().getJobId(reply, id) == (id != 0x10000));
  QueryJobsCompletedCommand::isJobComplete(reply);
  LockDeviceCommand::isGranted(reply);
  GetCacheCommand::isRequest(reply);
  if (GetCacheCommand().isReplyTo(reply)) QVN_FUZZ_CHECK(reply.getLength() >= 10);
}

void readAlert(const Data& data) {
  try {
    const CpdPrinterAlert alert(data);
    if (CpdPrinterAlert::isStatus(data))
      QVN_FUZZ_CHECK(alert.entry17().size() == 1 && alert.entry18().size() == 2);
  } catch (const Win32Exception&) {
    QVN_FUZZ_CHECK(!CpdPrinterAlert::isStatus(data) && !CpdPrinterAlert::isPowerOnReset(data));
  }
}

void readCache(Data data, std::uint16_t id, const std::string& value) {
  if (CpdPrinterCache::isValid(data)) {
    CpdPrinterCache cache(data);
    cache.update(id, {reinterpret_cast<const std::uint8_t*>(value.data()), value.size()});
    QVN_FUZZ_CHECK(cache.data().getLength() == data.getLength());
  }
  removeNpaHeader(data);
}

void nameJob(FuzzedDataProvider& input) {
  NamePrintJobCommand command;
  const std::string text = input.ConsumeRandomLengthString(400);
  command.setJobInfo(input.ConsumeIntegral<std::uint16_t>(), text, text, "user", "queue", text, "");
  QVN_FUZZ_CHECK(NpaPacket(command.packet()).isLengthConsistent());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  qvn::fuzz::SilentLogger::install();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  const auto mask = input.ConsumeIntegral<std::uint32_t>();
  const auto id = input.ConsumeIntegral<std::uint16_t>();
  const std::string value = input.ConsumeRandomLengthString(16);
  if (input.ConsumeBool()) nameJob(input);
  const Data request(input.ConsumeRandomLengthString(64));
  const Data reply(input.ConsumeRemainingBytesAsString());

  readPacket(request);
  readPacket(reply);
  readReply(request, reply);
  readAlert(reply);
  readCache(reply, id, value);
  RegisterForDeviceStatusAlertsCommand alerts;
  alerts.setMask(mask);
  QVN_FUZZ_CHECK(NpaPacket(alerts.packet()).isValidRequest());
  return 0;
}
