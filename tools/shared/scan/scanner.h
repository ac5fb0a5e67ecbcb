// A scanner that is open, and its pages one after another; what is said to it is its family's matter. One
// thread uses it; cancel() may be called by any and from a signal's handler.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "shared/scan/cancel_signal.h"
#include "shared/scan/capabilities.h"
#include "shared/scan/connection.h"
#include "shared/scan/error.h"
#include "shared/scan/page.h"
#include "shared/scan/page_pipe.h"
#include "shared/scan/settings.h"

namespace qvn::scan {

// The library is initialised for the life of this object. All that talks to the device throws Error.
class Scanner {
 public:
  // How long a scanner may send nothing before the page is given up.
  static constexpr std::chrono::milliseconds kPatience{60000};

  // Aborts a page in hand, and leaves the scanner to others.
  virtual ~Scanner() = default;
  Scanner(const Scanner&) = delete;
  Scanner& operator=(const Scanner&) = delete;

  virtual const Capabilities& capabilities() const = 0;

  // Keeps other hosts from scanning until unlock(), where the scanner can be locked.
  virtual void lock() = 0;
  virtual void unlock() = 0;

  // The next pages are scanned by the settings.
  virtual void apply(const Settings& settings) = 0;

  // Starts a page and waits for its first bytes. An empty feeder is Problem::NoSheet.
  void startPage();
  // Waits for bytes of the page and takes them, `buffer.size()` at most; 0 at the end of a complete page.
  // After that, and after an Error, the page is over.
  std::size_t read(std::span<std::uint8_t> buffer);
  // The same without waiting; nothing when there are no bytes yet.
  std::optional<std::size_t> readAvailable(std::span<std::uint8_t> buffer) { return take(buffer); }
  // To wait for bytes of the page in hand with; it can be read from at the page's end too. -1 without a page.
  int descriptor() const { return page_ ? page_->pipe().descriptor() : -1; }

  // Makes the page in hand, or the next one, end with Problem::Cancelled.
  void cancel() noexcept { cancel_.raise(); }
  bool cancelled() const noexcept { return cancel_.raised(); }
  // From here on pages are scanned again.
  void clearCancel() noexcept { cancel_.clear(); }
  // Aborts a page in hand, and what would follow it.
  void drop() noexcept { drop(Problem::Cancelled); }

 protected:
  // Opens the scanner.
  Scanner(std::uint32_t handle, std::chrono::milliseconds patience);

  std::uint32_t handle() const { return handle_; }
  std::chrono::milliseconds patience() const { return patience_; }
  const CancelSignal& cancelSignal() const { return cancel_; }
  bool hasPage() const { return page_ != nullptr; }
  // Opens the scanner again after disconnect().
  Connection& connection();
  void disconnect() noexcept { connection_.reset(); }

 private:
  // Has the scanner begin a page, whose bytes go to the page that is returned.
  virtual std::shared_ptr<Page> beginPage() = 0;
  // The page has been read to its end.
  virtual void finishPage() noexcept = 0;
  // Ends what the scanner is doing, if anything; `why` tells whether it can be talked to. Nothing that is
  // delivered waits for a reader any more.
  virtual void abort(Problem why) noexcept = 0;

  void drop(Problem why) noexcept;
  [[noreturn]] void fail(const Error& error);
  void waitForPage();
  std::optional<std::size_t> take(std::span<std::uint8_t> buffer);

  std::uint32_t handle_;
  std::chrono::milliseconds patience_;
  CancelSignal cancel_;
  std::unique_ptr<Connection> connection_;
  std::shared_ptr<Page> page_;  // also held by a delivery that is running
};

}  // namespace qvn::scan
