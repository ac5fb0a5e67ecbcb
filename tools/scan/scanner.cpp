#include "scanner.h"

#include <map>
#include <mutex>

#include "esc_replies.h"
#include "qvn/qvn.h"

namespace qvn::scan {

namespace {

// The pages in hand by the client that scans them: the library's callback has no other argument to find them.
class PagesInHand {
 public:
  void add(std::uint32_t client, std::shared_ptr<Page> page) {
    const std::lock_guard<std::mutex> lock(mutex_);
    pages_[client] = std::move(page);
  }
  void remove(std::uint32_t client) {
    const std::lock_guard<std::mutex> lock(mutex_);
    pages_.erase(client);
  }
  std::shared_ptr<Page> find(std::uint32_t client) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = pages_.find(client);
    return found == pages_.end() ? nullptr : found->second;
  }

 private:
  std::mutex mutex_;
  std::map<std::uint32_t, std::shared_ptr<Page>> pages_;
};

PagesInHand pagesInHand;

std::uint32_t onScanData(std::uint32_t client, std::uint32_t, std::uint32_t, std::uint32_t,
                         const std::uint8_t* data, std::uint32_t length) {
  if (const auto page = pagesInHand.find(client)) page->deliver({data, length});
  return 0;
}

// Cpd scanners send everything whatever the mask.
constexpr std::uint32_t kScanData = 0x1000;

void requireSuccess(std::uint32_t code, const std::string& sentence) {
  if (code == QRN_ERROR_SUCCESS) return;
  throw Error(code == QRN_ERROR_BUSY ? Problem::Busy : Problem::Failed, sentence, code);
}

}  // namespace

Scanner::Connection::Connection(std::uint32_t handle) : handle_(handle) {
  QvnGetClientId(&client_);
  requireSuccess(QvnOpenScanner(client_, handle_), "cannot open the scanner");
  QvnRegisterForAsyncDataScanner(client_, handle_, kScanData, onScanData);
}

Scanner::Connection::~Connection() {
  QvnUnregisterForAsyncDataScanner(client_, handle_);
  QvnCloseScanner(client_, handle_);
}

Scanner::Scanner(std::uint32_t handle, std::chrono::milliseconds patience)
    : handle_(handle),
      patience_(patience),
      connection_(handle),
      capabilities_(
          parseCapabilities(versionText(exchange(versionRequest(), "the question what it can do")))) {
  pageBytes_ = pageSize(capabilities_.defaults()).bytes();
}

Scanner::~Scanner() {
  dropPage();
  try {
    unlock();
  } catch (const Error&) {
    // The lock ends with the connection.
  }
}

std::vector<std::uint8_t> Scanner::exchange(const Request& request, const std::string& what) const {
  std::vector<std::uint8_t> reply(kLongestCommand);
  std::uint32_t length = 0;
  requireSuccess(QvnExchangeDataScanner(connection_.client(), handle_, request.data(),
                                        static_cast<std::uint32_t>(request.size()), reply.data(),
                                        static_cast<std::uint32_t>(reply.size()), &length),
                 "the scanner does not answer to " + what);
  reply.resize(length);
  return reply;
}

void Scanner::require(const Request& request, const std::string& what) const {
  requireGood(exchange(request, what), what);
}

void Scanner::lock() {
  require(lockRequest(), "the scan lock");
  locked_ = true;
}

void Scanner::unlock() {
  if (!locked_) return;
  locked_ = false;
  require(unlockRequest(), "the end of the scan lock");
}

void Scanner::apply(const Settings& settings) {
  capabilities_.check(settings);
  require(sourceRequest(settings.source), "the source");
  require(resolutionRequest(settings.dpi), "the resolution");
  require(colorFormatRequest(settings.mode), "the mode");
  // A scanner that checks the area as a whole must not see the new position with an old size behind it.
  require(clippingRequest({}), "the position");
  require(sizeRequest(settings.area), "the size");
  require(clippingRequest(settings.area), "the position");
  pageBytes_ = pageSize(settings).bytes();
}

void Scanner::startPage() {
  if (cancelled()) throw Error(Problem::Cancelled, "the scan was cancelled");
  page_ = std::make_shared<Page>(pageBytes_, cancel_);
  pagesInHand.add(connection_.client(), page_);
  const std::uint32_t started = QvnStartJobScanner(connection_.client(), handle_, nullptr);
  if (started != QRN_ERROR_SUCCESS) {
    pagesInHand.remove(connection_.client());
    page_.reset();
    requireSuccess(started, "cannot start the scan");
  }
  waitForPage();
  if (cancelled()) dropCancelledPage();
  if (const auto error = page_->error()) {
    dropPage();
    throw *error;
  }
}

void Scanner::dropPage() noexcept {
  if (!page_) return;
  // A delivery that waits for the reader would keep the device's answer to the abort from coming.
  page_->pipe().leave();
  QvnCancelJobScanner(connection_.client(), handle_);
  endPage();
}

void Scanner::dropCancelledPage() {
  dropPage();
  throw Error(Problem::Cancelled, "the scan was cancelled");
}

void Scanner::endPage() noexcept {
  QvnEndJobScanner(connection_.client(), handle_);
  pagesInHand.remove(connection_.client());
  page_.reset();
}

void Scanner::waitForPage() {
  if (page_->pipe().wait(patience_)) return;
  dropPage();
  throw Error(Problem::Silent,
              "the scanner sent nothing for " +
                  std::to_string(std::chrono::ceil<std::chrono::seconds>(patience_).count()) + " seconds");
}

std::optional<std::size_t> Scanner::take(std::span<std::uint8_t> buffer) {
  const PagePipe::Taken taken = page_->pipe().take(buffer);
  switch (taken.state) {
    case PagePipe::State::Some:
      return taken.count;
    case PagePipe::State::Nothing:
      return std::nullopt;
    case PagePipe::State::Cancelled:
      dropCancelledPage();
      break;
    case PagePipe::State::End:
      break;
  }
  if (const auto error = page_->error()) {
    dropPage();
    throw *error;
  }
  endPage();
  return 0;
}

std::size_t Scanner::read(std::span<std::uint8_t> buffer) {
  for (;;) {
    if (const auto count = take(buffer)) return *count;
    waitForPage();
  }
}

std::optional<std::size_t> Scanner::readAvailable(std::span<std::uint8_t> buffer) { return take(buffer); }

}  // namespace qvn::scan
