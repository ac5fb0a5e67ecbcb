#include "shared/scan/host_send_job.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace qvn::scan {

namespace {

// Alerts that end the job before its time. Others tell nothing that matters here.
struct Failure {
  std::string_view alert;
  Problem problem;
  const char* sentence;
};
constexpr std::array kFailures = {
    Failure{"No Original", Problem::NoSheet, "there is no sheet in the feeder"},
    Failure{"Scanner.CommError", Problem::Busy,
            "the scanner did not start the scan: another host may have it"},
    Failure{"Cancelled", Problem::Aborted, "the scan was aborted at the scanner"},
    Failure{"Job.DataTimeout", Problem::Silent, "the scanner stopped sending"},
    Failure{"Scan.Error", Problem::Failed, "the scanner reports an error"},
    // The transport's code for a connection that has gone.
    Failure{"Read Error=64", Problem::ConnectionLost, "the connection to the scanner was lost"},
};

}  // namespace

HostSendJob::HostSendJob(const Settings& settings, std::chrono::milliseconds nextPageWait)
    : source_(settings.source), pageBytes_(pageSize(settings).bytes()), nextPageWait_(nextPageWait) {}

void HostSendJob::receive(std::uint32_t kind, Bytes bytes) noexcept {
  if (isOver()) return;
  try {
    if (kind == kScanData) {
      takeData(bytes);
    } else {
      takeAlert({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
  } catch (const Error& error) {
    end(error);
  } catch (const std::exception& error) {
    end(Error(Problem::Failed, error.what()));
  }
}

bool HostSendJob::isOver() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return dropped_ || end_;
}

void HostSendJob::takeData(Bytes data) {
  if (!page_) throw Error(Problem::BadAnswer, "the scanner sent a block outside of a page");
  if (data.size() > pageBytes_ - taken_) {
    throw Error(Problem::BadAnswer,
                "the scanner sent more than the " + std::to_string(pageBytes_) + " bytes of the page");
  }
  taken_ += data.size();
  page_->put(data);
}

void HostSendJob::takeAlert(std::string_view text) {
  if (text == "Page.Start") return beginPage();
  if (text == "Page.End") return endPage();
  if (text == "Job.End") return endJob();
  const auto* const failure = std::find_if(kFailures.begin(), kFailures.end(),
                                           [&](const Failure& known) { return known.alert == text; });
  if (failure != kFailures.end()) throw Error(failure->problem, failure->sentence);
}

void HostSendJob::beginPage() {
  if (page_) throw Error(Problem::BadAnswer, "the scanner began a page within another");
  std::unique_lock<std::mutex> lock(mutex_);
  isKeptWaiting_ = true;
  changed_.notify_all();
  const bool isWanted =
      changed_.wait_for(lock, nextPageWait_, [this] { return dropped_ || offered_ != nullptr; });
  isKeptWaiting_ = false;
  if (!isWanted) throw Error(Problem::Failed, "nobody asked for the next page while the scanner waited");
  page_ = std::exchange(offered_, nullptr);
  taken_ = 0;
}

void HostSendJob::endPage() {
  if (!page_) throw Error(Problem::BadAnswer, "the scanner ended a page that it had not begun");
  if (taken_ != pageBytes_) {
    throw Error(Problem::BadAnswer, "the scanner ended the page after " + std::to_string(taken_) + " of " +
                                        std::to_string(pageBytes_) + " bytes");
  }
  sentPages_ = true;
  std::exchange(page_, nullptr)->end();
}

void HostSendJob::endJob() {
  if (page_) throw Error(Problem::BadAnswer, "the scanner ended the job within a page");
  if (!sentPages_ && source_ == Source::Flatbed) {
    throw Error(Problem::BadAnswer, "the scanner ended the job without a page");
  }
  throw Error(Problem::NoSheet, "there is no sheet in the feeder");
}

void HostSendJob::end(const Error& why) {
  std::shared_ptr<Page> unfinished = std::exchange(page_, nullptr);
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    end_ = why;
    if (!unfinished) unfinished = std::exchange(offered_, nullptr);
    changed_.notify_all();
  }
  if (unfinished) unfinished->end(why);
}

void HostSendJob::offer(std::shared_ptr<Page> page) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!end_) {
      offered_ = std::move(page);
      changed_.notify_all();
      return;
    }
  }
  page->end(*end_);  // nothing more is delivered
}

void HostSendJob::drop() noexcept {
  const std::lock_guard<std::mutex> lock(mutex_);
  dropped_ = true;
  changed_.notify_all();
}

void HostSendJob::waitForLastPage(std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait_for(lock, limit, [this] { return end_ || isKeptWaiting_; });
}

}  // namespace qvn::scan
