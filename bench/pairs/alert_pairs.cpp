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

constexpr std::uint32_t kExtendedAlerts = 0x100000;
constexpr int kAlertsPerPair = 101;

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
  // The connection is the source's nth.
  BareReceiver(AlertSource& source, std::uint32_t connection)
      : source_(source),
        connection_(connection),
        socket_(source.port()),
        reader_([this] { read(); }),
        waiter_([this] { wait(); }) {}
  // The threads end with one alert more.
  ~BareReceiver() {
    stopping_ = true;
    source_.raise(connection_);
    reader_.join();
    waiter_.join();
  }
  BareReceiver(const BareReceiver&) = delete;
  BareReceiver& operator=(const BareReceiver&) = delete;

  Arrival arrival;

 private:
  void read() {
    std::uint8_t alert[AlertSource::kAlertSize];
    while (!stopping_) {
      socket_.read(alert, sizeof alert);
      pass(AlertSource::sentAt(alert));
    }
    pass(kNoMore);
  }
  void pass(std::uint64_t sentAt) {
    const std::lock_guard<std::mutex> lock(mutex_);
    sentAt_ = sentAt;
    changed_.notify_one();
  }
  void wait() {
    for (;;) {
      std::unique_lock<std::mutex> lock(mutex_);
      changed_.wait(lock, [&] { return sentAt_ != 0; });
      const std::uint64_t sentAt = std::exchange(sentAt_, 0);
      lock.unlock();
      if (sentAt == kNoMore) return;
      arrival.set(sentAt);
    }
  }

  static constexpr std::uint64_t kNoMore = ~std::uint64_t{0};

  AlertSource& source_;
  const std::uint32_t connection_;
  const PlainSocket socket_;
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
  // Where the system puts a pair's threads decides much, and stays so: a round is a pair.
  std::uint32_t connections = 0;
  const std::vector<Ratio> ratios = untilStable([&] {
    require(QvnOpenPrinter(client, kAlertingPrinter), "QvnOpenPrinter");
    require(QvnRegisterForAlertsPrinter(client, kAlertingPrinter, kExtendedAlerts, onAlert),
            "QvnRegisterForAlertsPrinter");
    const std::uint32_t library = connections++;
    const std::uint32_t bareConnection = connections++;
    BareReceiver bare(source, bareConnection);
    Turns turns({[&] {
                   source.raise(library);
                   return atCallback.take();
                 },
                 [&] {
                   source.raise(bareConnection);
                   return bare.arrival.take();
                 }});
    std::vector<double> medians = turns.measure(kAlertsPerPair);
    require(QvnClosePrinter(client, kAlertingPrinter), "QvnClosePrinter");
    return medians;
  });
  table.atMost("alert: device's send to callback / bare loopback hop with a condition variable",
               "an operator reads \"paper jam\" as soon as the network has brought it", 1.5, ratios.front());
}

}  // namespace qvn::bench
