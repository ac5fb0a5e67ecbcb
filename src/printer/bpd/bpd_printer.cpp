#include "printer/bpd/bpd_printer.h"

#include <optional>
#include <utility>

#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "common/settings/application_settings.h"
#include "common/settings/setting_table.h"
#include "device/store/printer_store.h"
#include "printer/bpd/job/account_number_search.h"
#include "printer/bpd/states/bpd_printer_closed.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn {
namespace {

// Whether the text says that the device has not been verified: nothing when it says neither.
std::optional<bool> isUnverified(const std::string& attributes) {
  std::uint32_t unverified = 0;
  if (AttributeCodec::getLong(attributes, attribute::kUnverified, unverified) != QRN_ERROR_SUCCESS) return {};
  return unverified != 0;
}

}  // namespace

BpdPrinter::BpdPrinter(Verify verify)
    : StatePrinter("BpdPrinter", BpdPrinterClosed::getInstance()), verify_(std::move(verify)) {
  state().doEnterState(*this);
}

// The transport's threads call this object.
BpdPrinter::~BpdPrinter() { BpdPrinter::shutDown(); }

std::uint32_t BpdPrinter::doStartJob(const JobRequest& job) {
  return withState([&](const BpdPrinterState& state) { return state.doStartJob(*this, job); });
}

std::uint32_t BpdPrinter::doPrint(Data& request) {
  return withState([&](const BpdPrinterState& state) { return state.doPrint(*this, request); });
}

std::uint32_t BpdPrinter::doWrite(Data& request) { return doPrint(request); }

std::uint32_t BpdPrinter::doEndJob() {
  return withState([&](const BpdPrinterState& state) { return state.doEndJob(*this); });
}

std::uint32_t BpdPrinter::doExchangeNpa(Data& request, Data& response) {
  return withState(
      [&](const BpdPrinterState& state) { return state.doExchangeNpa(*this, request, response); },
      Nested::Allowed);
}

std::uint32_t BpdPrinter::doGetCache(Data& /*cache*/) {
  logDetail(log_component::server(),
            [&] { return LogText() << "BpdPrinter::doGetCache(handle=" << getHandle() << ") called"; });
  return QRN_ERROR_INVALID_FUNCTION;
}

std::unique_ptr<PrinterAlertTask> BpdPrinter::newAlertTask() {
  return std::make_unique<PrinterAlertTask>(*this);
}

void BpdPrinter::logNoAlertTask(const char* operation) {
  logError(log_component::server(), [&] {
    return LogText() << "BpdPrinter::" << operation << "(handle=" << getHandle()
                     << ") cannot get PrinterAlertTask";
  });
}

std::uint32_t BpdPrinter::verify() {
  const std::string attributes = getAttributes();
  if (!isUnverified(attributes)) return QRN_ERROR_SUCCESS;
  verify_(attributes);
  const OperationLock::Turn turn(configurationLock());
  std::string stored;
  const std::uint32_t rc = PrinterStore::getInstance().read(getHandle(), stored);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  if (isUnverified(stored).value_or(false)) return QRN_ERROR_INVALID_FUNCTION;
  setAttributes(stored);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdPrinter::getAccountNumber(const Data& data, std::string& account) {
  const auto found = findAccountNumber(bytesAsText(data), longSetting(setting::kJobAccountMarker));
  logDetail(log_component::server(), [&] {
    LogText text;
    text << "BpdPrinter::getAccountNumber(handle=" << getHandle();
    return found ? text << ") @PJL LJOBINFO ACCOUNTNUMBER was found in print data:" << *found
                 : text << ") @PJL LJOBINFO ACCOUNTNUMBER was NOT found in print data";
  });
  if (!found) return QRN_ERROR_NOT_FOUND;
  account = *found;
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
