// A Cpd scanner, which is driven by ESC commands; each page is a job.
#pragma once

#include <string>
#include <vector>

#include "shared/scan/capabilities.h"
#include "shared/scan/error.h"
#include "shared/scan/esc_requests.h"
#include "shared/scan/page.h"
#include "shared/scan/scanner.h"
#include "shared/scan/settings.h"

namespace qvn::scan {

class EscScanner : public Scanner {
 public:
  // Asks the scanner what it can do.
  EscScanner(std::uint32_t handle, std::chrono::milliseconds patience);
  ~EscScanner() override;

  const Capabilities& capabilities() const override { return capabilities_; }
  void lock() override;
  void unlock() override;
  void apply(const Settings& settings) override;

 private:
  std::shared_ptr<Page> beginPage() override;
  void finishPage() noexcept override;
  void abort(Problem why) noexcept override;

  // Sends the request and gives the reply; `what` names it in errors.
  std::vector<std::uint8_t> exchange(const Request& request, const std::string& what);
  void require(const Request& request, const std::string& what);

  Capabilities capabilities_;
  bool locked_ = false;
  bool scanning_ = false;
  std::uint64_t pageBytes_ = 0;  // by the settings applied last
};

}  // namespace qvn::scan
