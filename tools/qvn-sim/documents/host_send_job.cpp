#include "documents/host_send_job.h"

#include <utility>

namespace sim {

HostSendJob::HostSendJob(ConnectionId host, std::string name, const ScanSettings& settings,
                         ScanEngine& engine, Output output)
    : host_(host), name_(std::move(name)), settings_(settings), engine_(engine), output_(std::move(output)) {}

bool HostSendJob::isReady() {
  if (state_ != State::Created) return false;
  if (settings_.origin == PageOrigin::Flatbed || engine_.sheets() > 0) return true;
  tellState("No Original");
  return false;
}

void HostSendJob::start() {
  state_ = State::Scanning;
  tellState("Warming");
  tellState("Scanning");
  output_.mark("Job.Start");
  nextPage();
}

void HostSendJob::cancel() {
  if (!isRunning()) {
    state_ = State::Over;
  } else if (!output_.cutPage()) {
    pageOver(true);
  }
}

void HostSendJob::pageOver(bool wasCut) {
  engine_.endPage();
  if (wasCut) {
    tellState("Cancelled");
    complete();
    return;
  }
  const bool isFromFeeder = settings_.origin == PageOrigin::Feeder;
  output_.mark("Page.End");
  output_.notify("pageScanned",
                 Element::map({{"job type", "HostSendJob"}, {"source", isFromFeeder ? "ADF" : "Flatbed"}}));
  if (isFromFeeder) {
    nextPage();
  } else {
    state_ = State::WaitingForOriginal;
    tellState("Wait Next Original");
  }
}

void HostSendJob::nextPage() {
  if (engine_.beginPage(host_, settings_) != ScanEngine::Start::Good) {
    complete();
    return;
  }
  output_.mark("Page.Start");
  output_.beginPage(settings_);
}

void HostSendJob::complete() {
  state_ = State::Over;
  tellState("Complete");
  output_.mark("Job.End");
}

void HostSendJob::tellState(const char* state) {
  output_.notify("stateChanged", Element::map({{"job type", "ScanJob"}, {"state", state}}));
}

}  // namespace sim
