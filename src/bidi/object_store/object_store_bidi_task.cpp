#include "bidi/object_store/object_store_bidi_task.h"

#include <string_view>
#include <utility>

#include "bidi/object_store/object_store_command.h"
#include "bidi/object_store/reply_frame.h"
#include "common/logging/trace_scope.h"
#include "common/tasks/observation.h"
#include "qvn/result_codes.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {
ObjectStoreBidiTask::ObjectStoreBidiTask(Device& device, const Connection& connection,
                                         std::uint32_t requestId, std::string message, std::string& response)
    : device_(device),
      requestId_(requestId),
      message_(std::move(message)),
      response_(response),
      connection_(connection),
      runnable_(*this, &ObjectStoreBidiTask::runMethod) {}

ObjectStoreBidiTask::~ObjectStoreBidiTask() { shutdownThread(); }

std::uint32_t ObjectStoreBidiTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::bidi(),
                   [] { return LogText() << "ObjectStoreBidiTask::doExecute()"; });
  running_ = true;
  thread_ = std::make_unique<Thread>(runnable_);
  thread_->startAndWait();
  std::uint32_t exitCode = 0;
  const std::uint32_t rc = thread_->getExitCode(exitCode) ? exitCode : QRN_ERROR_SUCCESS;
  trace.setRc(rc);
  return rc;
}

std::uint32_t ObjectStoreBidiTask::doExecuteBackground() {
  TraceScope trace(BasicLogger::getInstance(), log_component::bidi(),
                   [] { return LogText() << "ObjectStoreBidiTask::doExecuteBackground()"; });
  shutdownThread();
  running_ = true;
  thread_ = std::make_unique<Thread>(runnable_);
  thread_->launch();
  trace.setRc(QRN_ERROR_SUCCESS);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t ObjectStoreBidiTask::shutdownThread() {
  TraceScope trace(BasicLogger::getInstance(), log_component::bidi(),
                   [] { return LogText() << "ObjectStoreBidiTask::shutdownThread()"; });
  if (thread_ != nullptr && running_) {
    trace.logDetail([] { return LogText() << "Need to kill thread"; });
    cancelBecause(ending_);
  }
  thread_.reset();
  running_ = false;
  {
    const std::lock_guard<std::mutex> lock(cancelLock_);
    ending_ = false;
  }
  trace.setRc(QRN_ERROR_SUCCESS);
  return QRN_ERROR_SUCCESS;
}

void ObjectStoreBidiTask::cancel() { cancelBecause(cancelled_); }

void ObjectStoreBidiTask::cancelBecause(bool& reason) {
  const std::lock_guard<std::mutex> lock(cancelLock_);
  reason = true;
  if (visitorRun_ != nullptr) visitorRun_->cancel();
}

std::uint32_t ObjectStoreBidiTask::runMethod() {
  // The owner may look at the flag as soon as the thread is done with everything else.
  const struct Running {
    ObjectStoreBidiTask& task;
    ~Running() {
      task.runsOn_ = std::thread::id();
      task.running_ = false;
    }
  } running{*this};
  runsOn_ = std::this_thread::get_id();
  isException_ = false;
  response_.clear();
  Data request(message_);
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  {
    const Observation observation(*this, device_);
    rc = send(request);
  }
  const auto logEnd = [this](const char* what) {
    logDetail(log_component::bidi(), [&] {
      return LogText() << "ObjectStoreBidiTask::runMethod: RequestId(" << requestId_ << what;
    });
  };
  if (isException_) return QRN_ERROR_INVALID_PARAMETER;
  if (rc != QRN_ERROR_SUCCESS) {
    logEnd(") could not send request");
    return rc;
  }
  if (request.getRc() != QRN_ERROR_SUCCESS) logEnd(") received no response");
  return request.getRc();
}

std::uint32_t ObjectStoreBidiTask::send(Data& request) {
  VisitorRun visitor(device_, visitor_name::kObjectStoreData);
  logDetail(log_component::bidi(), [&] {
    return LogText() << "ObjectStoreBidiTask::runMethod: RequestId(" << requestId_ << ") sent: " << message_;
  });
  {
    const std::lock_guard<std::mutex> lock(cancelLock_);
    visitorRun_ = &visitor;
    if (cancelled_ || ending_) visitor.cancel();
  }
  const struct AtWork {
    ObjectStoreBidiTask& task;
    ~AtWork() {
      const std::lock_guard<std::mutex> lock(task.cancelLock_);
      task.visitorRun_ = nullptr;
    }
  } atWork{*this};
  return visitor.run(connection_, &request);
}

void ObjectStoreBidiTask::doUpdate(Data& data) {
  const std::lock_guard<std::mutex> lock(updateMutex_);
  if (data.getLength() == 0) return;
  const std::string_view payload = unwrapReply(bytesAsText(data));
  bool isException = false;
  if (!ObjectStoreCommand(requestId_).matches(payload, isException)) return;
  detachFrom(device_);
  response_ = payload;
  isException_ = isException;
  logDetail(log_component::bidi(), [&] {
    return LogText() << "Device(" << device_.getHandle() << ") command correlation:\n " << response_;
  });
  if (!isException) return;
  logDetail(log_component::bidi(),
            [&] { return LogText() << "Device(" << device_.getHandle() << ") error returned"; });
}

}  // namespace qvn
