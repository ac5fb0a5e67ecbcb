// Reports on their way from a HID's send to the client's callback, against a bare socket.
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "alert_source.h"
#include "byte_sink.h"
#include "measure.h"
#include "pairs.h"
#include "qvn/qvn.h"

namespace qvn::bench {
namespace {

constexpr int kSingleRounds = 401;
constexpr int kManyRounds = 11;
constexpr std::uint32_t kMany = 100000;
// The connections of the source in the order in which they are made.
constexpr std::uint32_t kLibrary = 0;
constexpr std::uint32_t kBare = 1;

// The reports of one order as they come in, on whatever thread.
class Arrivals {
 public:
  void expect(std::uint32_t reports) {
    const std::lock_guard<std::mutex> lock(mutex_);
    expected_ = reports;
  }
  // From the first report's sending until the last one was here; what came out of order is lost.
  Seconds take() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!done_.wait_for(lock, std::chrono::seconds(60), [&] { return duration_ != 0; })) {
      throw std::runtime_error("a report was lost");
    }
    return static_cast<double>(std::exchange(duration_, 0)) * 1e-9;
  }
  void add(std::span<const std::uint8_t> bytes) {
    const HidSource::Report report = HidSource::parse(bytes);
    if (report.number != next_) return;
    if (next_++ == 0) begun_ = report.sentAt;
    if (next_ != expected_) return;
    const std::uint64_t now = nanosecondsNow();
    next_ = 0;
    const std::lock_guard<std::mutex> lock(mutex_);
    duration_ = now - begun_;
    done_.notify_one();
  }

 private:
  std::uint32_t next_ = 0;  // the receiving thread's own, and the next
  std::uint64_t begun_ = 0;
  std::atomic<std::uint32_t> expected_{0};
  std::mutex mutex_;
  std::condition_variable done_;
  std::uint64_t duration_ = 0;
};

Arrivals atCallback;
void onReport(std::uint32_t, std::uint32_t, const std::uint8_t* report, std::uint32_t length) {
  atCallback.add({report, length});
}

// One thread that reads the socket and takes the frames apart.
class BareReceiver {
 public:
  explicit BareReceiver(std::uint16_t port) : socket_(port), reader_([this] { read(); }) {}
  // The thread ends with one report more.
  void stop(const HidSource& source) {
    stopping_ = true;
    source.send(kBare, 1);
    reader_.join();
  }

  Arrivals arrivals;

 private:
  void read() {
    std::vector<std::uint8_t> buffer(std::size_t{256} << 10);
    std::size_t held = 0;
    while (!stopping_) {
      held += socket_.read(buffer.data() + held, buffer.size() - held);
      std::size_t at = 0;
      while (held - at >= HidSource::kFrameHeader) {
        const std::uint8_t* const frame = buffer.data() + at;
        const std::size_t length = frame[1] | std::size_t{frame[2]} << 8;
        if (held - at < HidSource::kFrameHeader + length) break;
        arrivals.add({frame + HidSource::kFrameHeader, length});
        at += HidSource::kFrameHeader + length;
      }
      held -= at;
      std::memmove(buffer.data(), buffer.data() + at, held);
    }
  }

  PlainSocket socket_;
  std::atomic<bool> stopping_{false};
  std::thread reader_;
};

}  // namespace

void measureHids(const Installation& installation, const HidSource& source, RatioTable& table) {
  const std::uint32_t client = installation.client();
  require(QvnOpenHid(client, kBusyHid), "QvnOpenHid");
  require(QvnRegisterForReportsHid(client, kBusyHid, onReport), "QvnRegisterForReportsHid");
  BareReceiver bare(source.port());
  const auto send = [&](std::uint32_t connection, Arrivals& arrivals, std::uint32_t reports) {
    arrivals.expect(reports);
    source.send(connection, reports);
    return arrivals.take();
  };
  const double single = medianRatio(
      kSingleRounds, [&] { return send(kLibrary, atCallback, 1); },
      [&] { return send(kBare, bare.arrivals, 1); });
  const double many = medianRatio(
      kManyRounds, [&] { return send(kBare, bare.arrivals, kMany); },
      [&] { return send(kLibrary, atCallback, kMany); });
  bare.stop(source);
  require(QvnCloseHid(client, kBusyHid), "QvnCloseHid");
  table.atMost("HID: report's send to callback / bare loopback hop", single, 1.5);
  table.atLeast("HID: 100,000 reports in order: throughput / bare receiver", many, 0.8);
}

}  // namespace qvn::bench
