// A scanner that a SANE program has open. One thread uses it at a time; cancel() may be called by any, and
// from a signal's handler.
#pragma once

#include <sane/sane.h>

#include <cstdint>
#include <memory>

#include "options.h"
#include "shared/scan/scanner.h"
#include "shared/scan/scanner_families.h"

namespace qvn::sane {

class OpenScanner {
 public:
  // Throws scan::Error.
  explicit OpenScanner(std::uint32_t handle)
      : scanner_(scan::openScanner(handle)), options_(scanner_->capabilities()) {}

  const Options& options() const { return options_; }
  SANE_Status control(SANE_Int option, SANE_Action action, void* value, SANE_Int* info);
  // Of the page in hand, else of the next one as far as the options tell.
  SANE_Parameters parameters() const;

  // These throw scan::Error, and end the page with it.
  void start();
  SANE_Status read(SANE_Byte* data, SANE_Int size, SANE_Int* length);

  void cancel() noexcept { scanner_->cancel(); }
  SANE_Status setNonBlocking(bool nonBlocking);
  SANE_Status selectDescriptor(SANE_Int* descriptor) const;

 private:
  enum class State { Idle, Scanning, Ended, Cancelled };

  void end(State state) noexcept;

  std::unique_ptr<scan::Scanner> scanner_;
  Options options_;
  State state_ = State::Idle;
  bool nonBlocking_ = false;
  SANE_Parameters pageParameters_{};
};

}  // namespace qvn::sane
