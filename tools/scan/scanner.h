// A Cpd scanner that is open, and its pages one after another. One thread uses it; cancel() may be called by
// any and from a signal's handler.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "cancel_signal.h"
#include "capabilities.h"
#include "esc_requests.h"
#include "page.h"
#include "settings.h"

namespace qvn::scan {

class Scanner {
 public:
  // How long a scanner may send nothing before the page is given up.
  static constexpr std::chrono::milliseconds kPatience{60000};

  // Opens the scanner and asks what it can do. The library is initialised for the life of this object.
  // This and all that talks to the device throws Error.
  explicit Scanner(std::uint32_t handle, std::chrono::milliseconds patience = kPatience);
  // Aborts a page in hand, and leaves the scanner to others.
  ~Scanner();
  Scanner(const Scanner&) = delete;
  Scanner& operator=(const Scanner&) = delete;

  const Capabilities& capabilities() const { return capabilities_; }

  // Keeps other hosts from scanning until unlock().
  void lock();
  void unlock();

  // Sends the settings; the next pages are scanned by them.
  void apply(const Settings& settings);

  // Starts a page and waits for its first bytes. An empty feeder is Problem::NoSheet.
  void startPage();
  // Waits for bytes of the page and takes them, `buffer.size()` at most; 0 at the end of a complete page.
  // After that, and after an Error, the page is over.
  std::size_t read(std::span<std::uint8_t> buffer);
  // The same without waiting; nothing when there are no bytes yet.
  std::optional<std::size_t> readAvailable(std::span<std::uint8_t> buffer);
  bool hasPage() const { return page_ != nullptr; }
  // To wait for bytes of the page in hand with; it can be read from at the page's end too. -1 without a page.
  int descriptor() const { return page_ ? page_->pipe().descriptor() : -1; }

  // Makes the page in hand, or the next one, end with Problem::Cancelled.
  void cancel() noexcept { cancel_.raise(); }
  bool cancelled() const noexcept { return cancel_.raised(); }
  // From here on pages are scanned again.
  void clearCancel() noexcept { cancel_.clear(); }
  // Aborts a page in hand.
  void dropPage() noexcept;

 private:
  // The open scanner, its registration included.
  class Connection {
   public:
    explicit Connection(std::uint32_t handle);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    std::uint32_t client() const { return client_; }

   private:
    std::uint32_t client_ = 0;
    std::uint32_t handle_;
  };

  // Sends the request and gives the reply; `what` names it in errors.
  std::vector<std::uint8_t> exchange(const Request& request, const std::string& what) const;
  void require(const Request& request, const std::string& what) const;
  std::optional<std::size_t> take(std::span<std::uint8_t> buffer);
  void waitForPage();
  [[noreturn]] void dropCancelledPage();
  void endPage() noexcept;

  std::uint32_t handle_;
  std::chrono::milliseconds patience_;
  CancelSignal cancel_;
  Connection connection_;
  Capabilities capabilities_;
  bool locked_ = false;
  std::uint64_t pageBytes_ = 0;  // by the settings applied last
  std::shared_ptr<Page> page_;   // also held by a delivery that is running
};

}  // namespace qvn::scan
