// A large page from the scanner to a client that throws it away, against a bare loop that receives the same
// bytes and finds the same commands in them.
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "measure.h"
#include "pairs/pairs.h"
#include "peers/byte_sink.h"
#include "qvn/qvn.h"

namespace qvn::bench {
namespace {

constexpr std::uint64_t kHeader = 8;
constexpr std::uint64_t kSent = ScanSource::kPageSize + kHeader * ScanSource::kBlocks;

// What the client has got of the page in hand.
class Delivery {
 public:
  // Until the whole page is there.
  void wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!done_.wait_for(lock, std::chrono::seconds(60), [&] { return isDone_; }) || bytes_ != kSent) {
      throw std::runtime_error("a part of the page was lost");
    }
    isDone_ = false;
    bytes_ = 0;
  }
  void add(const std::uint8_t* data, std::uint32_t length) {
    if (std::memcmp(data, ScanSource::kStatus.data(), 3) != 0) {
      bytes_ += length;
      return;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    isDone_ = true;
    done_.notify_one();
  }

 private:
  std::uint64_t bytes_ = 0;  // the delivering thread's own until the page is done
  std::mutex mutex_;
  std::condition_variable done_;
  bool isDone_ = false;
};

Delivery page;
std::uint32_t onData(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, const std::uint8_t* data,
                     std::uint32_t length) {
  page.add(data, length);
  return 0;
}

// From the start of the scan until the client has the status behind the page.
Seconds scan(std::uint32_t client) {
  const Seconds taken = timeOf([&] {
    require(QvnStartJobScanner(client, kFastScanner, nullptr), "QvnStartJobScanner");
    page.wait();
  });
  require(QvnEndJobScanner(client, kFastScanner), "QvnEndJobScanner");
  return taken;
}

// The same bytes in reads as large, each header parsed, what is behind the last whole block kept.
class BareReceiver {
 public:
  explicit BareReceiver(std::uint16_t port) : socket_(port) {}

  Seconds scan() {
    return timeOf([&] {
      socket_.writeAll(ScanSource::kGo.data(), ScanSource::kGo.size());
      std::uint64_t bytes = 0;
      std::size_t held = 0;
      for (bool ended = false; !ended;) {
        held += socket_.read(buffer_.data() + held, buffer_.size() - held);
        std::size_t at = 0;
        while (!ended && held - at >= kHeader) {
          const std::uint8_t* const header = buffer_.data() + at;
          ended = std::memcmp(header, ScanSource::kStatus.data(), 3) == 0;
          const std::size_t length = kHeader + (ended ? 0 : header[3] | std::size_t{header[4]} << 8);
          if (held - at < length) break;
          if (!ended) bytes += length;
          at += length;
        }
        held -= at;
        std::memmove(buffer_.data(), buffer_.data() + at, held);
      }
      if (bytes != kSent) throw std::runtime_error("a part of the page was lost");
    });
  }

 private:
  const PlainSocket socket_;
  std::vector<std::uint8_t> buffer_ = std::vector<std::uint8_t>(std::size_t{256} << 10);
};

}  // namespace

void measureScanning(const Installation& installation, const ScanSource& source, RatioTable& table) {
  const std::uint32_t client = installation.client();
  require(QvnOpenScanner(client, kFastScanner), "QvnOpenScanner");
  require(QvnRegisterForAsyncDataScanner(client, kFastScanner, 0, onData), "register");
  forgetPeakMemory();
  const double before = peakMemory();
  scan(client);
  table.atMost("scan: peak memory during a page of 418 MB / before it",
               "a page of any size scans on a machine with little memory", 1.1, peakMemory() / before);
  BareReceiver bare(source.port());
  table.atLeast("scan: throughput / bare recv loop that parses the same headers",
                "the scanner's motor never waits for the library", 0.8,
                medianRatio([&] { return bare.scan(); }, [&] { return scan(client); }));
  require(QvnCloseScanner(client, kFastScanner), "QvnCloseScanner");
}

}  // namespace qvn::bench
