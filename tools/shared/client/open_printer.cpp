#include "shared/client/open_printer.h"

#include <algorithm>
#include <utility>

#include "platform/base/clock.h"
#include "qvn/qvn.h"
#include "qvn/transport/attributes.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"

namespace qvn::cli {

namespace {

// How long to leave a printer alone that takes nothing now: longer each time, until it takes something.
constexpr platform::Milliseconds kShortestPause = 10;
constexpr platform::Milliseconds kLongestPause = 500;

// Who hears the notifications; the callback has no argument to carry it.
std::atomic<OpenPrinter*> heardBy{nullptr};

}  // namespace

OpenPrinter::OpenPrinter(const Session& session, const Device& printer, Listener listener)
    : client_(session.client()),
      printer_(printer),
      cancels_(isCpdPrinter(session, printer)),
      listener_(std::move(listener)) {
  require(QvnOpenPrinter(client_, printer_.handle), "cannot open " + printer_.text());
  heardBy = this;
  // A printer that does not tell leaves only the results of the calls to go by.
  QvnRegisterForNotificationsPrinter(client_, printer_.handle, kPrinterJob, onNotification);
}

OpenPrinter::~OpenPrinter() {
  QvnUnregisterForNotificationsPrinter(client_, printer_.handle);
  heardBy = nullptr;
  QvnClosePrinter(client_, printer_.handle);
}

void OpenPrinter::onNotification(std::uint32_t, std::uint32_t category, std::uint32_t id, const std::uint8_t*,
                                 std::uint32_t, std::uint32_t) {
  if (category == kPrinterJob) heardBy.load()->hear(static_cast<JobEvent>(id));
}

void OpenPrinter::hear(JobEvent event) {
  if (event == JobEvent::Error) inError_ = true;
  if (event == JobEvent::Busy) inError_ = false;
  if (event == JobEvent::Cancelled) jobCancelled_ = true;
  if (listener_) listener_(event);
}

std::uint32_t OpenPrinter::startJob(const JobNames& names) {
  jobCancelled_ = false;
  inError_ = false;
  return QvnStartJobPrinter(client_, printer_.handle, names.spoolerJobId, names.queue.c_str(),
                            names.host.c_str(), names.title.c_str(), names.user.c_str());
}

std::uint32_t OpenPrinter::write(const std::string& block) {
  std::size_t at = 0;
  platform::Milliseconds pause = kShortestPause;
  while (at < block.size() && !Interrupt::requested()) {
    std::uint32_t written = 0;
    const std::uint32_t result =
        QvnWritePrinter(client_, printer_.handle, reinterpret_cast<const std::uint8_t*>(block.data()) + at,
                        static_cast<std::uint32_t>(block.size() - at), &written);
    if (result != QRN_ERROR_SUCCESS && result != QRN_ERROR_INSUFFICIENT_BUFFER) {
      return result;
    }
    at += written;
    if (written == 0) {
      platform::sleep(pause);
      pause = std::min(2 * pause, kLongestPause);
    } else {
      pause = kShortestPause;
    }
  }
  return QRN_ERROR_SUCCESS;
}

// A mark is carried out at the end of a write, so one is made for it; what it holds is thrown away with the
// job. A printer of the other family would print it.
void OpenPrinter::cancelJob() {
  if (!cancels_) return;
  QvnCancelJobPrinter(client_, printer_.handle);
  const std::uint8_t nothing = 0;
  std::uint32_t written = 0;
  QvnWritePrinter(client_, printer_.handle, &nothing, 1, &written);
}

std::uint32_t OpenPrinter::endJob() { return QvnEndJobPrinter(client_, printer_.handle); }

bool isCpdPrinter(const Session& session, const Device& printer) {
  return readText(session, printer, attribute::kDevice) == "CpdPrinter";
}

}  // namespace qvn::cli
