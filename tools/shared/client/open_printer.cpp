#include "shared/client/open_printer.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
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

// Data is offered in pieces that take no longer, so that what has been taken is known soon, and at least so
// long, so that a fast printer is not kept waiting for the next one.
constexpr std::uint64_t kLongPiece = 500;
constexpr std::uint64_t kShortPiece = 100;
constexpr std::size_t kSmallestPiece = 1024;
constexpr std::size_t kLargestPiece = 0x40000;

constexpr platform::Milliseconds kWatchInterval = 100;

// Until it has made its first write of a job the buffered writer reckons with a second for each, and puts a
// client that has filled its queue to sleep for five. It is given the time for that write before the queue is
// full.
constexpr int kPiecesBeforeFirstWrite = 7;
constexpr platform::Milliseconds kFirstWrite = 100;

std::uint64_t now() { return platform::clock().monotonicMilliseconds(); }

// Whether the rest of the data is offered again: it was taken, or the printer takes nothing just now.
bool goesOn(std::uint32_t result) {
  return result == QRN_ERROR_SUCCESS || result == QRN_ERROR_INSUFFICIENT_BUFFER ||
         result == QRN_ERROR_TIMEOUT;
}

// Who hears the notifications; the callback has no argument to carry it.
std::atomic<OpenPrinter*> heardBy{nullptr};

}  // namespace

OpenPrinter::OpenPrinter(const Session& session, const Device& printer, Listener listener)
    : client_(session.client()),
      printer_(printer),
      cancels_(isCpdPrinter(session, printer)),
      listener_(std::move(listener)) {
  openDevice(session, printer_);
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
  if (event == JobEvent::Error) {
    isLost_ = true;
    refuses();
  }
  if (event == JobEvent::Busy) {
    isLost_ = false;
    refusesSince_ = 0;
  }
  if (event == JobEvent::Cancelled) jobCancelled_ = true;
  if (event == JobEvent::Ending) endBegan_ = now();
  if (event == JobEvent::TrueEnd) ended_ = now();
  if (listener_) listener_(event);
}

void OpenPrinter::refuses() {
  std::uint64_t never = 0;
  refusesSince_.compare_exchange_strong(never, now());
}

bool OpenPrinter::losesPatience() {
  const std::uint64_t since = refusesSince_;
  if (patience_ == 0 || since == 0 || now() - since < patience_) return false;
  if (!patienceLost_.exchange(true)) onItsEnd_();
  return true;
}

std::uint32_t OpenPrinter::startJob(const JobNames& names) {
  jobCancelled_ = false;
  patienceLost_ = isLost_ = false;
  pieces_ = 0;
  refusesSince_ = endBegan_ = ended_ = 0;
  return QvnStartJobPrinter(client_, printer_.handle, names.spoolerJobId, names.queue.c_str(),
                            names.host.c_str(), names.title.c_str(), names.user.c_str());
}

std::uint32_t OpenPrinter::write(const std::string& block, const std::function<void(std::size_t)>& onTaken) {
  std::size_t at = 0;
  platform::Milliseconds pause = kShortestPause;
  while (at < block.size() && !Interrupt::requested()) {
    const std::size_t offered = std::min(block.size() - at, piece_);
    if (pieces_++ == kPiecesBeforeFirstWrite && cancels_) platform::sleep(kFirstWrite);
    const std::uint64_t began = now();
    std::uint32_t taken = 0;
    const std::uint32_t result =
        QvnWritePrinter(client_, printer_.handle, reinterpret_cast<const std::uint8_t*>(block.data()) + at,
                        static_cast<std::uint32_t>(offered), &taken);
    at += taken;
    if (taken > 0) {
      // What the library keeps for a printer that it has lost says nothing of the printer.
      if (!isLost_) refusesSince_ = 0;
      if (onTaken) onTaken(taken);
    }
    if (!goesOn(result)) return result;
    if (taken < offered) refuses();
    if (losesPatience()) {
      cancelJob();
      return QRN_ERROR_TIMEOUT;
    }
    const std::uint64_t took = now() - began;
    if (took > kLongPiece) piece_ = std::max(piece_ / 2, kSmallestPiece);
    if (took < kShortPiece) piece_ = std::min(piece_ * 2, kLargestPiece);
    if (taken == 0) {
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

std::uint32_t OpenPrinter::endJob() {
  if (patience_ == 0) return QvnEndJobPrinter(client_, printer_.handle);
  std::mutex mutex;
  std::condition_variable changed;
  bool over = false;
  bool gaveUp = false;
  std::thread watch([&] {
    std::unique_lock<std::mutex> lock(mutex);
    while (!platform::clock().wait(lock, changed, kWatchInterval, [&] { return over; })) {
      if (!losesPatience()) continue;
      gaveUp = true;
      lock.unlock();
      cancelJob();
      return;
    }
  });
  const std::uint32_t result = QvnEndJobPrinter(client_, printer_.handle);
  {
    const std::lock_guard<std::mutex> lock(mutex);
    over = true;
  }
  changed.notify_all();
  watch.join();
  return gaveUp ? QRN_ERROR_TIMEOUT : result;
}

std::optional<platform::Milliseconds> OpenPrinter::endTook() const {
  if (endBegan_ == 0 || ended_ == 0) return std::nullopt;
  return static_cast<platform::Milliseconds>(ended_ - endBegan_);
}

bool isCpdPrinter(const Session& session, const Device& printer) {
  return readText(session, printer, attribute::kDevice) == "CpdPrinter";
}

}  // namespace qvn::cli
