// An alert's way from the device's send to the client's callback, against a bare socket whose reader wakes a
// waiting thread.
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

#include "measure.h"
#include "pairs/pairs.h"
#include "peers/alert_source.h"
#include "peers/byte_sink.h"
#include "qvn/qvn.h"

namespace qvn::bench {
namespace {

constexpr int kRounds = 401;
constexpr std::uint32_t kExtendedAlerts = 0x100000;
// The connections of the source in the order in which they are made.
constexpr std::uint8_t kLibrary = 0;
constexpr std::uint8_t kBare = 1;

// Where the latency of the latest alert is put, and waited for.
class Arrival {
 public:
  void set(std::uint64_t sentAt) {
    const std::uint64_t latency = nanosecondsNow() - sentAt;
    const std::lock_guard<std::mutex> lock(mutex_);
    latency_ = latency;
    arrived_.notify_one();
  }
  Seconds take() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!arrived_.wait_for(lock, std::chrono::seconds(10), [&] { return latency_ != 0; })) {
      throw std::runtime_error("an alert was lost");
    }
    return static_cast<double>(std::exchange(latency_, 0)) * 1e-9;
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::uint64_t latency_ = 0;
};

Arrival atCallback;
void onAlert(std::uint32_t, const std::uint8_t* alert, std::uint32_t length, std::uint32_t) {
  atCallback.set(AlertSource::sentAt({alert, length}));
}

// One thread reads the socket and wakes another, which notes the time: one hop and one wake-up.
class BareReceiver {
 public:
  explicit BareReceiver(std::uint16_t port)
      : socket_(port), reader_([this] { read(); }), waiter_([this] { wait(); }) {}
  // The source is told to end the connection by nobody: the threads end with one alert more.
  void stop(AlertSource& source) {
    stopping_ = true;
    source.raise(kBare);
    reader_.join();
    waiter_.join();
  }

  Arrival arrival;

 private:
  void read() {
    std::uint8_t alert[AlertSource::kAlertSize];
    while (!stopping_) {
      socket_.read(alert, sizeof alert);
      const std::lock_guard<std::mutex> lock(mutex_);
      sentAt_ = AlertSource::sentAt(alert);
      changed_.notify_one();
    }
  }
  void wait() {
    while (!stopping_) {
      std::uint64_t sentAt = 0;
      {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return sentAt_ != 0; });
        sentAt = std::exchange(sentAt_, 0);
      }
      arrival.set(sentAt);
    }
  }

  PlainSocket socket_;
  std::atomic<bool> stopping_{false};
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t sentAt_ = 0;
  std::thread reader_;
  std::thread waiter_;
};

}  // namespace

void measureAlerts(const Installation& installation, AlertSource& source, RatioTable& table) {
  const std::uint32_t client = installation.client();
  require(QvnOpenPrinter(client, kAlertingPrinter), "QvnOpenPrinter");
  require(QvnRegisterForAlertsPrinter(client, kAlertingPrinter, kExtendedAlerts, onAlert),
          "QvnRegisterForAlertsPrinter");
  BareReceiver bare(source.port());
  const double ratio = medianRatio(
      kRounds,
      [&] {
        source.raise(kLibrary);
        return atCallback.take();
      },
      [&] {
        source.raise(kBare);
        return bare.arrival.take();
      });
  bare.stop(source);
  require(QvnClosePrinter(client, kAlertingPrinter), "QvnClosePrinter");
  table.atMost("alert: device's send to callback / bare loopback hop with a condition variable", ratio, 1.5);
}

}  // namespace qvn::bench
