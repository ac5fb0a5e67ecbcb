// A job of a Bpd scanner, whose pages are told apart by alerts. The scanner goes on from page to page by
// itself: what it delivers of the next one waits until somebody wants it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "shared/scan/bytes.h"
#include "shared/scan/error.h"
#include "shared/scan/page.h"
#include "shared/scan/receiver.h"
#include "shared/scan/settings.h"

namespace qvn::scan {

class HostSendJob : public Receiver {
 public:
  // `nextPageWait`: how long the scanner is kept waiting for somebody who wants the next page.
  HostSendJob(const Settings& settings, std::chrono::milliseconds nextPageWait);

  void receive(std::uint32_t kind, Bytes bytes) noexcept override;

  // The reading thread.

  // The page that the scanner sends next goes there; so does the reason why there is none.
  void offer(std::shared_ptr<Page> page);
  // Nothing of the job is wanted any more, and nothing waits in receive().
  void drop() noexcept;
  // Returns when the job has ended, has begun a page that nobody has wanted yet, or the time is up.
  void waitForLastPage(std::chrono::milliseconds limit);

 private:
  bool isOver() const;
  void takeData(Bytes data);
  void takeAlert(std::string_view text);
  void beginPage();
  void endPage();
  void endJob();
  // There are no more pages.
  void end(const Error& why);

  const Source source_;
  const std::uint64_t pageBytes_;
  const std::chrono::milliseconds nextPageWait_;

  // The delivering thread's.
  std::shared_ptr<Page> page_;  // which the scanner is sending
  std::uint64_t taken_ = 0;     // of its bytes
  bool sentPages_ = false;

  mutable std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::shared_ptr<Page> offered_;
  bool isKeptWaiting_ = false;
  bool dropped_ = false;
  std::optional<Error> end_;  // why there are no more pages
};

}  // namespace qvn::scan
