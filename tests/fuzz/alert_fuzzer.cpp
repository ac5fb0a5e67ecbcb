// Alerts and the status cache as a printer sends them: their class, and what the tools say of them.
#include "fuzz/check.h"
#include "fuzz/silent_logger.h"
#include "npa/npa_packet.h"
#include "printer/clients/printer_alert_type.h"
#include "shared/alerts/alert_words.h"

using namespace qvn;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  qvn::fuzz::SilentLogger::install();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const Data data(bytes, static_cast<std::uint32_t>(size));
  const std::uint32_t type = getAlertType(data);
  QVN_FUZZ_CHECK((type & (type - 1)) == 0);

  const alerts::Alert alert = alerts::decodeAlert({bytes, size});
  QVN_FUZZ_CHECK(NpaPacket(data).isAlert() == (alert.kind != alerts::AlertKind::None));
  QVN_FUZZ_CHECK(!alert.words.empty());
  if (alert.status) QVN_FUZZ_CHECK(alert.kind == alerts::AlertKind::Status);
  if (const auto status = alerts::decodeCache({bytes, size})) {
    QVN_FUZZ_CHECK(!alerts::statusWords(*status).empty());
  }
  return 0;
}
