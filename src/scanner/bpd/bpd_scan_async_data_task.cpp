#include "scanner/bpd/bpd_scan_async_data_task.h"

#include <string>
#include <utility>

#include "bidi/element/element_text.h"
#include "bidi/object_store/received_message.h"
#include "bidi/object_store/store_messages.h"
#include "common/clients/operation_lock.h"
#include "common/leading_number.h"
#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"
#include "scanner/bpd/bpd_scanner.h"
#include "scanner/bpd/job/bpd_scan_job.h"
#include "scanner/bpd/job/bpd_scan_task.h"
#include "scanner/bpd/job/scan_job_watchdog.h"

namespace qvn {
namespace {

constexpr char kTask[] = "BpdScanAsyncDataTask::";

std::string valueOf(const StoreNotification& notification) {
  if (notification.objName == scan_object::kSystem) return textOrEmpty(notification.data.get());
  return entryOf(notification.data.get(),
                 notification.event == scan_object::kPageScanned ? "source" : "state");
}

}  // namespace

BpdScanAsyncDataTask::~BpdScanAsyncDataTask() = default;

std::uint32_t BpdScanAsyncDataTask::registerClient(std::uint32_t clientId, std::uint32_t mask,
                                                   QvnScanDataCallback callback) {
  logDetail(log_component::server(), [&] {
    return (LogText() << kTask << "registerClient()" << clientId << " dataMask=0x").radix(mask, 16);
  });
  if (!clients_.add(scanner_.getHandle(), {mask, clientId, callback})) return QRN_ERROR_INVALID_PARAMETER;
  settle();
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdScanAsyncDataTask::unregisterClient(std::uint32_t clientId) {
  clients_.remove(scanner_.getHandle(), clientId);
  settle();
  return QRN_ERROR_SUCCESS;
}

void BpdScanAsyncDataTask::unregisterAll() {
  clients_.removeAll(scanner_.getHandle());
  settle();
}

void BpdScanAsyncDataTask::waitForCalls(std::uint32_t clientId) {
  clients_.waitForCalls(scanner_.getHandle(), clientId);
}

void BpdScanAsyncDataTask::settle() {
  const std::lock_guard<std::mutex> lock(attachingMutex_);
  if (clients_.isEmpty() == detached_) return;
  logDetail(log_component::server(), [&] {
    return LogText() << kTask
                     << (detached_ ? "registerClient(): attaching as observer"
                                   : "unregisterClient() detaching as observer");
  });
  if (detached_) {
    attachTo(scanner_);
  } else {
    detachFrom(scanner_);
  }
  registrationNeeded(!detached_);
}

void BpdScanAsyncDataTask::startJob(std::uint32_t clientId) {
  const std::lock_guard<std::mutex> lock(jobLock_);
  job_ = Job{};
  job_.clientId = clientId;
}

void BpdScanAsyncDataTask::endJob() {
  const std::lock_guard<std::mutex> lock(jobLock_);
  job_.endSeen = job_.completeSeen = true;
}

bool BpdScanAsyncDataTask::jobHasEnded() const {
  const std::lock_guard<std::mutex> lock(jobLock_);
  return job_.hasEnded();
}

bool BpdScanAsyncDataTask::noteEnd(bool Job::*sign) {
  const std::lock_guard<std::mutex> lock(jobLock_);
  job_.*sign = true;
  return job_.hasEnded();
}

void BpdScanAsyncDataTask::updateClients(Data& data) {
  if (data.getLength() == 0) {
    if (data.getRc() == QRN_ERROR_SUCCESS) return;
    scanner_.watchdog().setPhase(ScanPhase::ReadError);
    if (scanner_.job().isTracked()) {
      doScanAlertCallbacks(scan_data::kAlert, "Read Error=" + std::to_string(data.getRc()));
    }
    return;
  }
  const ScanBlock block = readScanBlock(data);
  switch (block.kind) {
    case ScanBlock::Kind::None:
      break;
    case ScanBlock::Kind::Document:
      takeDocument(block.text);
      break;
    case ScanBlock::Kind::ScanData:
      takeScanData(block.text);
      break;
    case ScanBlock::Kind::JobStart:
      if (!scanner_.isScanning()) break;
      {
        const std::lock_guard<std::mutex> lock(jobLock_);
        job_.endSeen = false;
      }
      doScanAlertCallbacks(scan_data::kAlert, "Job.Start");
      break;
    case ScanBlock::Kind::JobEnd:
      if (noteEnd(&Job::endSeen)) doScanAlertCallbacks(scan_data::kAlert, "Job.End");
      break;
    case ScanBlock::Kind::PageStart:
      scanner_.watchdog().setPhase(ScanPhase::PageStart);
      alertIfScanning("Page.Start");
      break;
    case ScanBlock::Kind::PageEnd:
      scanner_.watchdog().setPhase(ScanPhase::PageEnd);
      alertIfScanning("Page.End");
      break;
    case ScanBlock::Kind::Event:
      doScanAlertCallbacks(block.text == "Scanner.CommError" ? scan_data::kDetail : scan_data::kAlert,
                           std::string(block.text));
      break;
  }
}

void BpdScanAsyncDataTask::alertIfScanning(const char* text) {
  if (scanner_.isScanning()) doScanAlertCallbacks(scan_data::kAlert, text);
}

void BpdScanAsyncDataTask::takeScanData(std::string_view body) {
  const auto length = static_cast<std::uint32_t>(body.size());
  Job job;
  {
    const std::lock_guard<std::mutex> lock(jobLock_);
    job_.bytes += length;
    ++job_.blocks;
    job = job_;
  }
  logDetail(log_component::server(), [&] {
    return LogText() << kTask << "updateClients: data callback " << job.blocks << ", size " << length
                     << ", bytes " << job.bytes;
  });
  scanner_.watchdog().setPhase(ScanPhase::Data);
  if (scanner_.isScanning()) {
    handleScanDataCallbacks(reinterpret_cast<const std::uint8_t*>(body.data()), length);
  }
  scanner_.job().countDataBlock();
}

void BpdScanAsyncDataTask::takeDocument(std::string_view document) {
  if (scanner_.job().isTracked()) doScanAlertCallbacks(scan_data::kDetail, std::string(document));
  if (const auto notification = readNotification(document)) takeNotification(*notification);
}

void BpdScanAsyncDataTask::takeNotification(const StoreNotification& notification) {
  if (notification.observer == scan_object::kSystemObserver) return;
  const std::string value = valueOf(notification);
  if (leadingNumber<std::uint32_t>(notification.observer) == scanner_.getHandle()) {
    if (entryOf(notification.data.get(), "job type") != "ScanJob") {
      if (notification.event == scan_object::kPageScanned && value == "ADF") {
        doScanAlertCallbacks(scan_data::kAlert, "Job.AdfEvent");
      } else if (notification.event == scan_object::kPageScanned && value == "Flatbed") {
        doScanAlertCallbacks(scan_data::kAlert, "Job.FlatbedEvent");
      }
    } else if (value == "Warming") {
      scanner_.watchdog().setPhase(ScanPhase::Warming);
      doScanAlertCallbacks(scan_data::kDetail, "Lamp.Warming");
      return;
    } else if (value == "Wait Next Original") {
      scanner_.finishOriginal(notification.objName);
      return;
    } else if (value == "Complete") {
      if (noteEnd(&Job::completeSeen)) doScanAlertCallbacks(scan_data::kAlert, "Job.End");
    }
  }
  doScanAlertCallbacks(scan_data::kDetail, value);
}

template <typename Returned>
bool BpdScanAsyncDataTask::callClients(std::uint32_t bit, const std::uint8_t* data, std::uint32_t length,
                                       Returned&& returned) {
  std::uint32_t jobClientId = 0;
  {
    const std::lock_guard<std::mutex> lock(jobLock_);
    jobClientId = job_.clientId;
  }
  return clients_.callEach(
      scanner_.getHandle(),
      [&](const AsyncDataRegistration& client) {
        return (client.mask & bit) != 0 && client.callback != nullptr;
      },
      [&](const AsyncDataRegistration& client) {
        returned(client.clientId,
                 client.callback(client.clientId, jobClientId, scanner_.getHandle(), bit, data, length));
      },
      [&](const AsyncDataRegistration& client, const std::string& thrown) {
        logError(log_component::server(), [&] {
          return LogText() << kTask << "callClients() Caught Exception clientId=" << client.clientId
                           << ", Exception=" << thrown;
        });
      });
}

void BpdScanAsyncDataTask::handleScanDataCallbacks(const std::uint8_t* body, std::uint32_t length) {
  const OperationLock::Turn turn(scanner_.notifyLock(), OperationLock::Nested::Allowed);
  const bool called =
      callClients(scan_data::kData, body, length, [](std::uint32_t clientId, std::uint32_t result) {
        logDetail(log_component::server(), [&] {
          return LogText() << kTask << "handleScanDataCallbacks() scan data cliendID=" << clientId;
        });
        logDetail(log_component::server(), [&] {
          return LogText() << kTask << "handleScanDataCallbacks() callback returned " << result;
        });
      });
  if (called) return;
  logDetail(log_component::server(),
            [] { return LogText() << kTask << "handleScanDataCallbacks: callback not found!"; });
}

void BpdScanAsyncDataTask::doScanAlertCallbacks(std::uint32_t bits, const std::string& text) {
  const OperationLock::Turn turn(scanner_.notifyLock(), OperationLock::Nested::Allowed);
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.c_str());
  const auto length = static_cast<std::uint32_t>(text.size());
  bool called = false;
  for (const std::uint32_t bit : {scan_data::kAlert, scan_data::kDetail}) {
    if ((bits & bit) == 0) continue;
    called = callClients(bit, bytes, length, [](std::uint32_t, std::uint32_t) {}) || called;
  }
  if (called) return;
  logDetail(log_component::server(),
            [] { return LogText() << kTask << "doScanAlertCallbacks() callback not found!"; });
}

}  // namespace qvn
