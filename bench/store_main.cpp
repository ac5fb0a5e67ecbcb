// A Bpd scanner: its documents against a bare ping-pong, its page against a bare loop that finds the same
// tags, and what its watchdog costs while nothing happens. It stands on the library's inner parts, as no
// exported function exchanges a document. Prints the rows and adds them to the file that the argument names.
#include <unistd.h>
#include <array>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "bidi/object_store/received_message.h"
#include "bidi/object_store/store_messages.h"
#include "exchange_rows.h"
#include "installation.h"
#include "measure.h"
#include "peers/byte_sink.h"
#include "peers/object_source.h"
#include "qvn/qvn.h"
#include "ratio_table.h"
#include "scanner/bpd/bpd_scanner.h"

namespace qvn::bench {
namespace {

constexpr std::uint32_t kScanner = 401;
constexpr std::uint32_t kSilentScanner = 402;
constexpr std::uint32_t kScanData = 0x1000;
constexpr std::uint32_t kAlerts = 0x6000;

// What the client has got of the job in hand.
class Delivery {
 public:
  void add(std::uint32_t event, const std::uint8_t* data, std::uint32_t length) {
    if (event == kScanData) {
      bytes_ += length;
      return;
    }
    const std::string_view text(reinterpret_cast<const char*>(data), length);
    const std::lock_guard<std::mutex> lock(mutex_);
    if (text == "Job.End") ended_ = true;
    if (text == "Scanner.CommError") failed_ = true;
    changed_.notify_one();
  }
  // Until the job has ended, with so many bytes.
  void wait(std::uint64_t bytes) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!changed_.wait_for(lock, std::chrono::seconds(60), [&] { return ended_ || failed_; }) || failed_ ||
        bytes_ != bytes) {
      throw std::runtime_error("a part of the page was lost");
    }
    ended_ = false;
    bytes_ = 0;
  }

 private:
  std::uint64_t bytes_ = 0;  // the delivering thread's own until the job has ended
  std::mutex mutex_;
  std::condition_variable changed_;
  bool ended_ = false;
  bool failed_ = false;
};

Delivery job;
std::uint32_t onData(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t event,
                     const std::uint8_t* data, std::uint32_t length) {
  job.add(event, data, length);
  return 0;
}

class OpenScanner {
 public:
  OpenScanner(std::uint32_t client, std::uint32_t handle) : client_(client), handle_(handle) {
    require(QvnOpenScanner(client_, handle_), "QvnOpenScanner");
    QvnRegisterForAsyncDataScanner(client_, handle_, kScanData | kAlerts, onData);
  }
  ~OpenScanner() { QvnCloseScanner(client_, handle_); }
  OpenScanner(const OpenScanner&) = delete;
  OpenScanner& operator=(const OpenScanner&) = delete;

  void start() const { require(QvnStartJobScanner(client_, handle_, nullptr), "QvnStartJobScanner"); }
  void end() const { require(QvnEndJobScanner(client_, handle_), "QvnEndJobScanner"); }

 private:
  const std::uint32_t client_;
  const std::uint32_t handle_;
};

// The same bytes in reads as large: each header and each tag is found, what is behind the last whole block
// kept.
class BareReceiver {
 public:
  explicit BareReceiver(std::uint16_t port) : socket_(port) {}

  void scan() {
    const std::string start = ObjectSource::block(callMethod("Job_1", "start", nullptr).document);
    socket_.writeAll(reinterpret_cast<const std::uint8_t*>(start.data()), start.size());
    std::uint64_t bytes = 0;
    std::size_t held = 0;
    for (bool ended = false; !ended;) {
      held += socket_.read(buffer_.data() + held, buffer_.size() - held);
      std::size_t at = 0;
      while (!ended && held - at >= ObjectSource::kHeader) {
        const std::size_t length = ObjectSource::payloadLength(buffer_.data() + at);
        if (held - at - ObjectSource::kHeader < length) break;
        ended =
            take({reinterpret_cast<const char*>(buffer_.data()) + at + ObjectSource::kHeader, length}, bytes);
        at += ObjectSource::kHeader + length;
      }
      held -= at;
      std::memmove(buffer_.data(), buffer_.data() + at, held);
    }
    if (bytes != ObjectSource::kPageSize) throw std::runtime_error("a part of the page was lost");
  }

 private:
  static bool take(std::string_view payload, std::uint64_t& bytes) {
    const std::string_view front = payload.substr(0, 32);
    const std::size_t open = front.find('<');
    const std::size_t close = front.find('>', open);
    if (close == std::string_view::npos) return false;
    const std::string_view tag = front.substr(open + 1, close - open - 1);
    if (tag == "Scan.Data") bytes += payload.size() - close - 1;
    return tag == "Job.End";
  }

  const PlainSocket socket_;
  std::vector<std::uint8_t> buffer_ = std::vector<std::uint8_t>(std::size_t{256} << 10);
};

void measurePage(std::uint32_t client, const ObjectSource& source, RatioTable& table) {
  const OpenScanner scanner(client, kScanner);
  BareReceiver bare(source.port());
  table.atLeast("scan: throughput of a host-send page of 418 MB / bare recv loop that finds the same tags",
                "the scanner's motor never waits for the library", 0.8,
                medianRatio([&] { return timeOf([&] { bare.scan(); }); },
                            [&] {
                              const Seconds taken = timeOf([&] {
                                scanner.start();
                                job.wait(ObjectSource::kPageSize);
                              });
                              scanner.end();
                              return taken;
                            }));
}

// One document and its reply, written and read as the library does.
void bareExchange(const PlainSocket& socket) {
  const StoreMessage message = addObserver("system", "systemUpdate", "Observer_System");
  const std::string block = ObjectSource::block(message.document);
  socket.writeAll(reinterpret_cast<const std::uint8_t*>(block.data()), block.size());
  std::array<std::uint8_t, 1024> buffer;
  const std::size_t count = socket.read(buffer.data(), buffer.size());
  const std::string_view reply(reinterpret_cast<const char*>(buffer.data()), count);
  if (classifyMessage(reply.substr(ObjectSource::kHeader)).requestId != message.requestId) {
    throw std::runtime_error("no reply");
  }
}

void measureExchange(const ObjectSource& source, RatioTable& table) {
  addExchangeRows(table, "object store", "bare ping-pong and codec", "starting a job at a Bpd scanner", [&] {
    const PlainSocket socket(source.port());
    BpdScanner scanner;
    scanner.setAttributes(Installation::bpdScannerText(kScanner, source.port()));
    require(scanner.doOpen(), "opening the scanner");
    std::vector<double> ratios = exchangeRatios(
        [&] {
          require(scanner.objectStore().exchange(addObserver("system", "systemUpdate", "Observer_System")),
                  "the exchange");
        },
        [&] { bareExchange(socket); });
    require(scanner.doClose(), "closing the scanner");
    return ratios;
  });
}

// How often the other threads of the process have given up the processor by themselves: each time they slept.
std::uint64_t sleepsOfOthers() {
  const std::string self = std::to_string(gettid());
  std::uint64_t sleeps = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    if (task.path().filename() == self) continue;
    std::ifstream status(task.path() / "status");
    for (std::string key; status >> key;) {
      std::uint64_t count = 0;
      if (key == "voluntary_ctxt_switches:" && status >> count) sleeps += count;
    }
  }
  return sleeps;
}

void measureWatchdog(std::uint32_t client, RatioTable& table) {
  const OpenScanner scanner(client, kSilentScanner);
  scanner.start();
  // The job has started and nothing comes: from then on only the clock goes on.
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  const std::uint64_t before = sleepsOfOthers();
  std::this_thread::sleep_for(std::chrono::seconds(3));
  table.atMost("watchdog: wake-ups of all threads in 3 s of a job that is silent",
               "a laptop that waits for a scanner sleeps", 0, static_cast<double>(sleepsOfOthers() - before));
  scanner.end();
}

void run(const char* file) {
  const ObjectSource pages(false);
  const ObjectSource silence(true);
  const Installation installation;
  installation.storeBpdScanner(kScanner, pages.port());
  installation.storeBpdScanner(kSilentScanner, silence.port());
  RatioTable table;
  measureExchange(pages, table);
  measurePage(installation.client(), pages, table);
  measureWatchdog(installation.client(), table);
  table.print();
  table.appendTo(file);
}

}  // namespace
}  // namespace qvn::bench

int main(int argc, char** argv) { return qvn::bench::benchMain(argc, argv, qvn::bench::run); }
