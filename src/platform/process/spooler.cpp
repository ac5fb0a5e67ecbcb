#include "platform/process/spooler.h"

#include <sys/socket.h>

#include <array>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/base/access.h"
#include "platform/base/clock.h"
#include "platform/base/failure.h"
#include "platform/process/cups_library.h"
#include "platform/registry/registry.h"
#include "platform/threads/all_signals_blocked.h"
#include "platform/threads/event.h"

namespace qvn::platform {
namespace {

constexpr Milliseconds kListingTimeout = 5000;
constexpr char kMonitorsKey[] = "System\\CurrentControlSet\\Control\\Print\\Monitors\\";

// ---- Queues -----------------------------------------------------------------------------------

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// A percent sign that begins no code of a character stays one, and so does a code of none.
std::string percentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool coded = text[i] == '%' && i + 2 < text.size();
    const int high = coded ? hexDigit(text[i + 1]) : -1;
    const int low = coded ? hexDigit(text[i + 2]) : -1;
    if (high < 0 || low < 0 || (high == 0 && low == 0)) {
      decoded += text[i];
      continue;
    }
    decoded += static_cast<char>(high << 4 | low);
    i += 2;
  }
  return decoded;
}

std::string portOf(std::string_view deviceUri) {
  for (const std::string_view scheme : {"qvn://", "qvn:"}) {
    if (deviceUri.starts_with(scheme)) return percentDecoded(deviceUri.substr(scheme.size()));
  }
  return std::string(deviceUri);
}

struct HttpCloser {
  const CupsLibrary& cups;
  void operator()(http_t* connection) const { cups.httpClose(connection); }
};

struct IppDeleter {
  const CupsLibrary& cups;
  void operator()(ipp_t* message) const { cups.ippDelete(message); }
};

using IppMessage = std::unique_ptr<ipp_t, IppDeleter>;

// The answer to the request for the printers; null when none comes.
IppMessage requestPrinters(const CupsLibrary& cups) {
  static constexpr std::array<const char*, 2> kWanted = {"printer-name", "device-uri"};
  const std::unique_ptr<http_t, HttpCloser> connection(
      cups.httpConnect2(cups.cupsServer(), cups.ippPort(), nullptr, AF_UNSPEC, cups.cupsEncryption(), 1,
                        static_cast<int>(kListingTimeout), nullptr),
      HttpCloser{cups});
  if (!connection) return IppMessage(nullptr, IppDeleter{cups});
  // Without it a read from a server that hangs would never end.
  cups.httpSetTimeout(
      connection.get(), kListingTimeout / 1000.0, [](http_t*, void*) { return 0; }, nullptr);
  // Nobody is there to be asked.
  cups.cupsSetPasswordCB2(
      [](const char*, http_t*, const char*, const char*, void*) -> const char* { return nullptr; }, nullptr);
  ipp_t* const request = cups.ippNewRequest(IPP_OP_CUPS_GET_PRINTERS);
  cups.ippAddInteger(request, IPP_TAG_OPERATION, IPP_TAG_ENUM, "printer-type", CUPS_PRINTER_LOCAL);
  cups.ippAddInteger(request, IPP_TAG_OPERATION, IPP_TAG_ENUM, "printer-type-mask",
                     static_cast<int>(CUPS_PRINTER_CLASS | CUPS_PRINTER_REMOTE | CUPS_PRINTER_DISCOVERED));
  cups.ippAddStrings(request, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
                     static_cast<int>(kWanted.size()), nullptr, kWanted.data());
  return IppMessage(cups.cupsDoRequest(connection.get(), request, "/"), IppDeleter{cups});
}

std::vector<PrintQueue> queuesIn(const CupsLibrary& cups, ipp_t* response) {
  std::vector<PrintQueue> queues;
  PrintQueue queue;
  const auto finish = [&] {
    if (!queue.printerName.empty()) queues.push_back(std::exchange(queue, {}));
  };
  // One group of attributes a printer, an attribute of no group between two.
  for (ipp_attribute_t* attribute = cups.ippFirstAttribute(response); attribute != nullptr;
       attribute = cups.ippNextAttribute(response)) {
    if (cups.ippGetGroupTag(attribute) != IPP_TAG_PRINTER) {
      finish();
      continue;
    }
    const char* const name = cups.ippGetName(attribute);
    const char* const text = cups.ippGetString(attribute, 0, nullptr);
    if (name == nullptr || text == nullptr) continue;
    if (name == std::string_view("printer-name")) queue.printerName = queue.shareName = text;
    if (name == std::string_view("device-uri")) queue.portName = portOf(text);
  }
  finish();
  return queues;
}

std::optional<std::vector<PrintQueue>> askCups() {
  const CupsLibrary* const cups = CupsLibrary::get();
  if (cups == nullptr) return std::nullopt;
  const IppMessage response = requestPrinters(*cups);
  if (!response) return std::nullopt;
  const ipp_status_t status = cups->ippGetStatusCode(response.get());
  // The answer of a server that has no printer at all.
  if (status == IPP_STATUS_ERROR_NOT_FOUND) return std::vector<PrintQueue>();
  if (status > IPP_STATUS_OK_CONFLICTING) return std::nullopt;
  return queuesIn(*cups, response.get());
}

// What the caller of a listing shares with the thread that asks for it.
struct Listing {
  std::mutex mutex;
  std::condition_variable changed;
  bool isDone = false;
  std::optional<std::vector<PrintQueue>> queues;
};

void run(const std::shared_ptr<Listing>& listing) {
  auto queues = askCups();
  const std::lock_guard guard(listing->mutex);
  listing->queues = std::move(queues);
  listing->isDone = true;
  listing->changed.notify_all();
}

// ---- Monitors ---------------------------------------------------------------------------------

ErrorCode recordMonitor(const PrintMonitor& monitor) {
  namespace reg = registry;
  const std::string path = kMonitorsKey + monitor.name;
  reg::Key key;
  if (reg::openKey(reg::Hive::LocalMachine, path, key) == kSuccess) return kMonitorAlreadyInstalled;
  const Access everyone{.everyone = true, .inheritable = true};
  ErrorCode error = reg::createKey(reg::Hive::LocalMachine, path, everyone, key);
  if (error == kSuccess) error = reg::setValue(key, "Driver", reg::ValueType::String, monitor.module);
  if (error == kSuccess && !monitor.environment.empty()) {
    error = reg::setValue(key, "Environment", reg::ValueType::String, monitor.environment);
  }
  return error;
}

}  // namespace

ErrorCode localPrintQueues(std::vector<PrintQueue>& queues) {
  queues.clear();
  const auto listing = std::make_shared<Listing>();
  try {
    // A thread of its own, left alone when it is late: looking up the server's name has no limit of time.
    const AllSignalsBlocked blocked;
    std::thread(run, listing).detach();
  } catch (const std::system_error& failure) {
    return fail(errorFromErrno(failure.code().value()));
  }
  std::unique_lock lock(listing->mutex);
  clock().wait(lock, listing->changed, kListingTimeout, [&] { return listing->isDone; });
  if (!listing->queues) return fail(kSpoolerUnavailable);
  queues = std::move(*listing->queues);
  return kSuccess;
}

ErrorCode addPrintMonitor(const PrintMonitor& monitor) {
  if (monitor.name.empty() || monitor.module.empty() || monitor.name.find('\\') != std::string::npos) {
    return fail(kInvalidParameter);
  }
  const ErrorCode result = registry::transaction([&] { return recordMonitor(monitor); });
  if (result != kSuccess && result != kMonitorAlreadyInstalled) return fail(result);
  // A monitor that was there before would be running: its event is set too.
  ErrorCode error = kSuccess;
  const auto started = NamedEvent::create(kMonitorStartEvent, true, false, {.everyone = true}, error);
  if (started != nullptr) started->set();
  return fail(result);
}

}  // namespace qvn::platform
