#include "shared/scan/esc_scanner.h"

#include "qvn/qvn.h"
#include "qvn/result_codes.h"
#include "shared/scan/connection.h"
#include "shared/scan/esc_page.h"
#include "shared/scan/esc_replies.h"

namespace qvn::scan {

EscScanner::EscScanner(std::uint32_t handle, std::chrono::milliseconds patience)
    : Scanner(handle, patience),
      capabilities_(
          parseCapabilities(versionText(exchange(versionRequest(), "the question what it can do")))) {
  pageBytes_ = pageSize(capabilities_.defaults()).bytes();
}

EscScanner::~EscScanner() {
  drop();
  try {
    EscScanner::unlock();
  } catch (const Error&) {
    // The lock ends with the connection.
  }
}

std::vector<std::uint8_t> EscScanner::exchange(const Request& request, const std::string& what) {
  std::vector<std::uint8_t> reply(kLongestCommand);
  std::uint32_t length = 0;
  requireSuccess(QvnExchangeDataScanner(connection().client(), handle(), request.data(),
                                        static_cast<std::uint32_t>(request.size()), reply.data(),
                                        static_cast<std::uint32_t>(reply.size()), &length),
                 "the scanner does not answer to " + what);
  reply.resize(length);
  return reply;
}

void EscScanner::require(const Request& request, const std::string& what) {
  requireGood(exchange(request, what), what);
}

void EscScanner::lock() {
  require(lockRequest(), "the scan lock");
  locked_ = true;
}

void EscScanner::unlock() {
  if (!locked_) return;
  locked_ = false;
  require(unlockRequest(), "the end of the scan lock");
}

void EscScanner::apply(const Settings& settings) {
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

std::shared_ptr<Page> EscScanner::beginPage() {
  const auto page = std::make_shared<EscPage>(pageBytes_, cancelSignal());
  connection().attach(page);
  const std::uint32_t started = QvnStartJobScanner(connection().client(), handle(), nullptr);
  if (started != QRN_ERROR_SUCCESS) {
    connection().detach();
    requireSuccess(started, "cannot start the scan");
  }
  scanning_ = true;
  return page;
}

void EscScanner::finishPage() noexcept {
  scanning_ = false;
  QvnEndJobScanner(connection().client(), handle());
  connection().detach();
}

void EscScanner::abort(Problem) noexcept {
  if (!scanning_) return;
  QvnCancelJobScanner(connection().client(), handle());
  finishPage();
}

}  // namespace qvn::scan
