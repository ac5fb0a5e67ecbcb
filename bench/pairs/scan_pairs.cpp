// A large page from the scanner to clients that throw it away, against a bare loop that receives the same
// bytes and finds the same commands in them.
#include <condition_variable>
#include <cstdio>
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

constexpr int kRounds = 11;
constexpr std::uint64_t kHeader = 8;
constexpr std::uint64_t kSent = ScanSource::kPageSize + kHeader * ScanSource::kBlocks;

// What all clients have got, counted on the one thread that delivers to them.
struct Received {
  std::uint64_t bytes = 0;
  std::uint64_t statuses = 0;
};

class Delivery {
 public:
  // Until that many clients have the whole page.
  void wait(std::uint64_t clients) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!done_.wait_for(lock, std::chrono::seconds(60), [&] { return received_.statuses == clients; }) ||
        received_.bytes != clients * kSent) {
      throw std::runtime_error("a part of the page was lost");
    }
    received_ = {};
  }
  void add(const std::uint8_t* data, std::uint32_t length) {
    if (std::memcmp(data, ScanSource::kStatus.data(), 3) != 0) {
      delivering_.bytes += length;
      return;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    received_.bytes += delivering_.bytes;
    delivering_ = {};
    ++received_.statuses;
    done_.notify_one();
  }

 private:
  Received delivering_;  // the delivering thread's own
  std::mutex mutex_;
  std::condition_variable done_;
  Received received_;
};

Delivery page;
std::uint32_t onData(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, const std::uint8_t* data,
                     std::uint32_t length) {
  page.add(data, length);
  return 0;
}

// So many clients that get the same page.
class Clients {
 public:
  explicit Clients(std::uint32_t count) : count_(count) {
    for (std::uint32_t client = 1; client <= count_; ++client) {
      require(QvnRegisterForAsyncDataScanner(client, kFastScanner, 0, onData), "register");
    }
  }
  ~Clients() {
    for (std::uint32_t client = 1; client <= count_; ++client) {
      QvnUnregisterForAsyncDataScanner(client, kFastScanner);
    }
  }
  Clients(const Clients&) = delete;
  Clients& operator=(const Clients&) = delete;

  // From the start of the scan until all have the status behind the page.
  Seconds scan(std::uint32_t client) const {
    const Seconds taken = timeOf([&] {
      require(QvnStartJobScanner(client, kFastScanner, nullptr), "QvnStartJobScanner");
      page.wait(count_);
    });
    require(QvnEndJobScanner(client, kFastScanner), "QvnEndJobScanner");
    return taken;
  }

 private:
  const std::uint32_t count_;
};

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
  {
    const Clients one(1);
    const double before = peakMemory();
    one.scan(client);
    const double after = peakMemory();
    std::fprintf(stderr, "scan: peak memory %.0f KiB before the page, %.0f KiB after it\n", before, after);
    table.atMost("scan: peak memory after a page of 418 MB / before it", after / before, 1.1);
    BareReceiver bare(source.port());
    const auto bareScan = [&] { return bare.scan(); };
    table.atLeast("scan: throughput / bare recv loop that parses the same headers",
                  medianRatio(kRounds, bareScan, [&] { return one.scan(client); }), 0.8);
  }
  for (const std::uint32_t count : {4u, 16u}) {
    std::vector<Seconds> forMany;
    std::vector<Seconds> forOne;
    const auto scanFor = [client](std::uint32_t clients, std::vector<Seconds>& times) {
      return times.emplace_back(Clients(clients).scan(client));
    };
    table.atMost("scan: time with " + std::to_string(count) + " clients / with one",
                 medianRatio(
                     kRounds, [&] { return scanFor(count, forMany); }, [&] { return scanFor(1, forOne); }),
                 count);
    const Seconds delivery =
        (median(forMany) - median(forOne)) / (count - 1) / static_cast<double>(ScanSource::kBlocks);
    std::fprintf(stderr, "scan: a block's delivery to each of %u clients more takes %.0f ns\n", count - 1,
                 delivery * 1e9);
  }
  require(QvnCloseScanner(client, kFastScanner), "QvnCloseScanner");
}

}  // namespace qvn::bench
