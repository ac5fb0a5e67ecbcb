#include "printer/bpd/dc_summary_task.h"

#include "common/logging/trace_scope.h"
#include "device/visitor_run.h"
#include "npa/npa_packet.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {

DcSummaryTask::DcSummaryTask(Printer& printer, const Connection& connection)
    : ExchangeTask(printer, connection, command_.packet(), reply_), printer_(printer) {}

std::uint32_t DcSummaryTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [] { return LogText() << "DcSummaryTask::doExecute()"; });
  std::uint32_t rc = runOnWorker();
  if (rc == QRN_ERROR_SUCCESS && NpaPacket(reply_).isRejected()) rc = QRN_ERROR_BAD_COMMAND;
  if (rc == QRN_ERROR_INVALID_FUNCTION) {
    rc = QRN_ERROR_SUCCESS;
  } else if (rc == QRN_ERROR_SUCCESS) {
    rc = applySummary();
  }
  trace.setRc(rc);
  return rc;
}

std::uint32_t DcSummaryTask::runMethod() {
  const std::uint32_t rc = exchange(visitor_name::kNpaData, [] {});
  logDetail(log_component::server(), [&] {
    return reply_.getLength() == 0 ? LogText() << "DcSummaryTask received no response"
                                   : (LogText() << "DcSummaryTask response:").hex(reply_);
  });
  return rc != QRN_ERROR_SUCCESS ? rc : request_.getRc();
}

void DcSummaryTask::doUpdate(Data& data) {
  const std::lock_guard<std::mutex> lock(updateMutex_);
  logDetail(log_component::server(), [] { return LogText() << "DcSummaryTask::doUpdate"; });
  if (!command_.isReplyTo(data)) return;
  response_ = data;
  detachFrom(device_);
}

std::uint32_t DcSummaryTask::applySummary() {
  std::string sizeOnly;
  std::uint32_t maxPacketSize = 0;
  if (command_.getMaxPacketSize(reply_, maxPacketSize)) {
    AttributeCodec::setLong(sizeOnly, attribute::kMaxWritePacketSize, maxPacketSize);
  }
  DcSummaryCommand::Revisions revisions{};
  const bool hasRevisions = command_.getNpaVersions(reply_, revisions);
  printer_.changeAttributes([&](std::string& attributes) {
    if (!sizeOnly.empty()) {
      AttributeCodec::setLong(attributes, attribute::kMaxWritePacketSize, maxPacketSize);
    }
    if (hasRevisions) {
      AttributeCodec::setByteArray(attributes, attribute::kNpaRevisionLevel, revisions.data(),
                                   static_cast<std::uint32_t>(revisions.size()));
    }
    return QRN_ERROR_SUCCESS;
  });
  if (sizeOnly.empty()) return QRN_ERROR_SUCCESS;
  Data size(sizeOnly);
  return VisitorRun(printer_, visitor_name::kSetMaxPacketSize).run(connection_, &size);
}

}  // namespace qvn
