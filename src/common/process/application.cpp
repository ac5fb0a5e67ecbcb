#include "common/process/application.h"

#include <utility>

#include "common/exception.h"
#include "platform/base/clock.h"
#include "platform/base/error.h"
#include "platform/threads/event.h"
#include "platform/threads/thread.h"

namespace qvn {
namespace {

constexpr int kMaxPolls = 100;

}  // namespace

Application::Application(std::string commandLine) : commandLine_(std::move(commandLine)) {}

Application::~Application() = default;

void Application::launch() {
  platform::ErrorCode error = platform::kInvalidParameter;
  process_.reset();
  if (priorityClass_ == kNormalPriority) process_ = platform::ChildProcess::start(commandLine_, error);
  if (!process_) throw Win32Exception("Application::launch()", error, "Application", 237);
}

void Application::start() {
  launch();
  for (int poll = 0; poll < kMaxPolls; ++poll) {
    std::uint32_t exitCode = 0;
    const platform::ErrorCode error = process_->exitCode(exitCode);
    if (error != platform::kSuccess) throw Win32Exception("Application::start()", error, "Application", 258);
    if (exitCode == platform::kStillActive) return;
    platform::sleep(pollInterval_);
  }
}

bool Application::setPriorityClass(std::uint32_t priorityClass) {
  priorityClass_ = priorityClass;
  return !isRunning() || priorityClass == kNormalPriority;
}

bool Application::isRunning() const {
  std::uint32_t exitCode = 0;
  return process_ && process_->exitCode(exitCode) == platform::kSuccess && exitCode == platform::kStillActive;
}

bool Application::waitFor(platform::Milliseconds timeout) {
  return process_ && process_->wait(timeout) == platform::WaitResult::Signalled;
}

}  // namespace qvn
