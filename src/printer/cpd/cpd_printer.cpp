#include "printer/cpd/cpd_printer.h"

#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "common/settings/application_settings.h"
#include "common/settings/setting_table.h"
#include "device/connection_use.h"
#include "device/notification.h"
#include "npa/job_commands.h"
#include "printer/cpd/cache_task.h"
#include "printer/cpd/cpd_printer_alert_task.h"
#include "printer/cpd/cpd_printer_cache.h"
#include "printer/cpd/states/cpd_printer_closed.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"
#include "qvn/transport/notification.h"

namespace qvn {

CpdPrinter::CpdPrinter() : StatePrinter("CpdPrinter", CpdPrinterClosed::getInstance()), writer_(*this) {
  state().doEnterState(*this);
}

// The transport's threads and the writer's call this object.
CpdPrinter::~CpdPrinter() { CpdPrinter::shutDown(); }

void CpdPrinter::shutDown() {
  endReferences();
  writer_.purge();
  writer_.stop();
  StatePrinter::shutDown();
}

std::uint32_t CpdPrinter::doStartJob(const JobRequest& job) {
  return withState([&](const CpdPrinterState& state) {
    writerEnabled_ = longSetting(setting::kCpdPrinterMwo) != 0;
    const std::uint32_t rc = state.doStartJob(*this, job);
    if (rc == QRN_ERROR_SUCCESS && writerEnabled_) writer_.begin();
    return rc;
  });
}

std::uint32_t CpdPrinter::doPrint(Data& request) {
  // What its own notification reports on is not over: nothing could be written before that.
  if (stateLock().isHeldHere()) refuseInCallback("the operation is not over");
  return writerEnabled_ ? writer_.print(request) : doWrite(request);
}

std::uint32_t CpdPrinter::doWrite(Data& request) {
  return withState([&](const CpdPrinterState& state) { return state.doPrint(*this, request); });
}

std::uint32_t CpdPrinter::doEndJob() {
  if (writerEnabled_) {
    refuseInCallback("the writer is not over");
    // Without the state lock, which the writer's thread needs to drain its queue.
    writer_.stop();
  }
  return withState([&](const CpdPrinterState& state) { return state.doEndJob(*this); });
}

void CpdPrinter::requestCancel() { writer_.requestCancel(); }

std::uint32_t CpdPrinter::doExchangeNpa(Data& request, Data& response) {
  return withState(
      [&](const CpdPrinterState& state) {
        const std::uint32_t rc = state.doExchangeNpa(*this, request, response);
        if (!GetCacheCommand::isRequest(request)) return rc;
        if (rc == QRN_ERROR_SUCCESS) {
          setCache(response);
        } else if (rc == QRN_ERROR_INVALID_FUNCTION) {
          const Data stored = cache();
          if (stored.getLength() == 0) return rc;
          // A cache longer than the response leaves the response as it is.
          response.fill(stored.getBuffer(), stored.getLength());
          return QRN_ERROR_SUCCESS;
        }
        return rc;
      },
      Nested::Allowed);
}

std::uint32_t CpdPrinter::doGetCache(Data& cache) {
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  {
    const ConnectionUse connection(*this, connection_name::kCache);
    rc = CacheTask(*this, *connection, cache).execute();
  }
  if (rc == QRN_ERROR_INVALID_FUNCTION) {
    rc = fetchCacheByNpa(cache);
    removeNpaHeader(cache);
  }
  return rc;
}

std::uint32_t CpdPrinter::fetchCacheByNpa(Data& output) {
  logDetail(log_component::server(), [] { return LogText() << " sending NPA to get cache"; });
  return withState([&](const CpdPrinterState& before) {
    const std::uint32_t opened = before.doOpen(*this);
    const std::uint32_t rc = resultOf([&] {
      GetCacheCommand command;
      Data reply;
      const std::uint32_t exchanged = state().doExchangeNpa(*this, command.packet(), reply);
      if (exchanged == QRN_ERROR_SUCCESS) setCache(reply);
      const Data stored = cache();
      if (stored.getLength() == 0) return exchanged;
      output = stored;
      return QRN_ERROR_SUCCESS;
    });
    if (opened == QRN_ERROR_SUCCESS) resultOf([&] { return state().doClose(*this); });
    return rc;
  });
}

Data CpdPrinter::cache() {
  CriticalSectionLock lock(cacheLock_);
  return cache_;
}

void CpdPrinter::setCache(const Data& cache) {
  CriticalSectionLock lock(cacheLock_);
  cache_ = cache;
}

void CpdPrinter::updateCacheEntry(std::uint16_t id, std::span<const std::uint8_t> value) {
  CriticalSectionLock lock(cacheLock_);
  if (!CpdPrinterCache::isValid(cache_)) return;
  CpdPrinterCache cache(cache_);
  if (cache.update(id, value) == QRN_ERROR_SUCCESS) cache_ = cache.data();
}

std::unique_ptr<PrinterAlertTask> CpdPrinter::newAlertTask() {
  return std::make_unique<CpdPrinterAlertTask>(*this);
}

void CpdPrinter::logNoAlertTask(const char* operation) {
  logError(log_component::server(),
           [&] { return LogText() << "CpdPrinter::" << operation << "() cannot get PrinterAlertTask"; });
}

void CpdPrinter::sendJobStatus(std::uint32_t id) {
  Notification record;
  record.handle = getHandle();
  record.category = job_status::kCategory;
  record.id = id;
  notifyJobStatus(record);
}

}  // namespace qvn
