#include "shared/scan/host_send_scanner.h"

#include <string>
#include <utility>
#include <vector>

#include "qvn/qvn.h"
#include "qvn/result_codes.h"
#include "shared/scan/connection.h"

namespace qvn::scan {

namespace {

// How long a job whose last page has been sent may take to say that it has ended.
constexpr std::chrono::milliseconds kJobEndWait{10000};
// The same of a job that is about to be cancelled.
constexpr std::chrono::milliseconds kCancelDelay{1000};

// What the library's watchdog allows between two blocks of a page; "TimeoutX" is a multiple of it.
constexpr std::chrono::milliseconds kWatchdogStep{6000};

Capabilities hostSendCapabilities() {
  Capabilities scanner;
  scanner.resolutions = {75, 100, 150, 200, 300, 600, 1200};
  scanner.modes = {kColorModes.begin(), kColorModes.end()};
  scanner.width = 10200;
  scanner.height = 14040;
  scanner.feeder = true;
  return scanner;
}

int bitDepth(ColorMode mode) {
  constexpr int kDepths[] = {1, 8, 24};
  return kDepths[static_cast<std::size_t>(mode)];
}

struct JobParameter {
  const char* key;
  std::string value;
};

std::vector<JobParameter> jobParameters(const Settings& settings, std::chrono::milliseconds patience) {
  const Area& area = settings.area;
  // The library gives a scanner up no earlier than the reader does.
  const auto watchdogSteps = (patience + kWatchdogStep - std::chrono::milliseconds(1)) / kWatchdogStep;
  return {
      {"Scan.Param.Resolution", std::to_string(settings.dpi)},
      {"Scan.Param.BitDepth", std::to_string(bitDepth(settings.mode))},
      {"Scan.Param.Source", settings.source == Source::Feeder ? "1" : "0"},
      {"Scan.Doc.Window.TopLeft.X", std::to_string(area.left)},
      {"Scan.Doc.Window.TopLeft.Y", std::to_string(area.top)},
      {"Scan.Doc.Window.BottomRight.X", std::to_string(area.left + area.width)},
      {"Scan.Doc.Window.BottomRight.Y", std::to_string(area.top + area.height)},
      {"Scan.Doc.Compression", "0"},
      {"Scan.Doc.FileFormat", "0"},
      {"TimeoutX", std::to_string(watchdogSteps)},
      // A connection that is lost is told of at once.
      {"Track", "1"},
  };
}

}  // namespace

HostSendScanner::HostSendScanner(std::uint32_t handle, std::chrono::milliseconds patience)
    : Scanner(handle, patience), capabilities_(hostSendCapabilities()), settings_(capabilities_.defaults()) {}

HostSendScanner::~HostSendScanner() { drop(); }

// A job goes on with the settings that it was started with.
void HostSendScanner::apply(const Settings& settings) {
  capabilities_.check(settings);
  if (settings != settings_) drop();
  settings_ = settings;
}

std::shared_ptr<Page> HostSendScanner::beginPage() {
  auto page = std::make_shared<Page>(cancelSignal());
  if (job_) {
    job_->offer(page);
  } else {
    startJob(page);
  }
  return page;
}

void HostSendScanner::startJob(std::shared_ptr<Page> page) {
  setParameters();
  auto job = std::make_shared<HostSendJob>(settings_, patience());
  job->offer(std::move(page));
  connection().attach(job);
  const std::uint32_t started = QvnStartJobScanner(connection().client(), handle(), nullptr);
  if (started != QRN_ERROR_SUCCESS) {
    connection().detach();
    requireSuccess(started, "cannot start the scan");
  }
  job_ = std::move(job);
}

// The library forgets them with each job.
void HostSendScanner::setParameters() {
  for (const auto& [key, value] : jobParameters(settings_, patience())) {
    requireSuccess(QvnSetJobStringScanner(connection().client(), handle(), key, value.c_str()),
                   "cannot set up the scan");
  }
}

// The feeder's job ends when a page is wanted that there is no sheet for.
void HostSendScanner::finishPage() noexcept {
  if (settings_.source == Source::Feeder) return;
  job_->waitForLastPage(kJobEndWait);
  endJob();
}

void HostSendScanner::abort(Problem why) noexcept {
  if (!job_) return;
  // Between two pages the scanner may be about to tell that there are no more.
  if (!hasPage()) job_->waitForLastPage(kCancelDelay);
  if (why == Problem::Silent || why == Problem::ConnectionLost) {
    // It would not answer a cancel. With its connection the job ends on the scanner too.
    job_->drop();
    connection().detach();
    job_.reset();
    disconnect();
  } else {
    endJob();
  }
}

void HostSendScanner::endJob() noexcept {
  // The scanner's answers come behind what waits to be taken.
  job_->drop();
  const std::uint32_t ended = QvnEndJobScanner(connection().client(), handle());
  connection().detach();
  job_.reset();
  // The library goes on to wait for the end of a job that it could not end.
  if (ended != QRN_ERROR_SUCCESS) disconnect();
}

}  // namespace qvn::scan
