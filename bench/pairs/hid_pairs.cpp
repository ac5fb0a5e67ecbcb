// Reports on their way from a HID's send to the client's callback, against a bare socket.
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "measure.h"
#include "pairs/pairs.h"
#include "peers/byte_sink.h"
#include "qvn/qvn.h"

namespace qvn::bench {
namespace {

constexpr int kSingleRounds = 101;
constexpr int kManyRounds = 2;
constexpr std::uint32_t kMany = 100000;

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
  // The connection is the source's nth.
  BareReceiver(const HidSource& source, std::uint32_t connection)
      : source_(source), connection_(connection), socket_(source.port()), reader_([this] { read(); }) {}
  // The thread ends with one report more.
  ~BareReceiver() {
    stopping_ = true;
    source_.send(connection_, 1);
    reader_.join();
  }
  BareReceiver(const BareReceiver&) = delete;
  BareReceiver& operator=(const BareReceiver&) = delete;

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

  const HidSource& source_;
  const std::uint32_t connection_;
  const PlainSocket socket_;
  std::atomic<bool> stopping_{false};
  std::thread reader_;
};

// One HID that is open and one bare receiver of the same reports.
class Pair {
 public:
  Pair(std::uint32_t client, const HidSource& source, std::uint32_t number)
      : client_(client), source_(source), library_(2 * number), bareNumber_(library_ + 1) {
    require(QvnOpenHid(client_, kBusyHid), "QvnOpenHid");
    require(QvnRegisterForReportsHid(client_, kBusyHid, onReport), "QvnRegisterForReportsHid");
    bare_.emplace(source, bareNumber_);
  }
  ~Pair() {
    QvnUnregisterForReportsHid(client_, kBusyHid);
    QvnCloseHid(client_, kBusyHid);
  }
  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;

  Seconds throughLibrary(std::uint32_t reports) { return send(library_, atCallback, reports); }
  Seconds bare(std::uint32_t reports) { return send(bareNumber_, bare_->arrivals, reports); }

 private:
  Seconds send(std::uint32_t connection, Arrivals& arrivals, std::uint32_t reports) const {
    arrivals.expect(reports);
    source_.send(connection, reports);
    return arrivals.take();
  }

  const std::uint32_t client_;
  const HidSource& source_;
  const std::uint32_t library_;  // the source's connections, in the order in which they are made
  const std::uint32_t bareNumber_;
  std::optional<BareReceiver> bare_;
};

}  // namespace

void measureHids(const Installation& installation, const HidSource& source, RatioTable& table) {
  // Where the system puts a pair's threads decides more than anything else, and stays so: a round is a pair.
  std::uint32_t number = 0;
  const std::vector<Ratio> ratios = untilStable([&] {
    Pair pair(installation.client(), source, number++);
    Turns single({[&] { return pair.throughLibrary(1); }, [&] { return pair.bare(1); }});
    Turns many({[&] { return pair.bare(kMany); }, [&] { return pair.throughLibrary(kMany); }});
    return std::vector{single.measure(kSingleRounds).front(), many.measure(kManyRounds).front()};
  });
  table.atMost("HID: report's send to callback / bare loopback hop",
               "a key pressed at the device is with the program when the network has brought it", 1.5,
               ratios[0]);
  table.atLeast("HID: 100,000 reports in order: throughput / bare receiver",
                "a device that reports without a pause is kept up with, and no report is lost", 0.8,
                ratios[1]);
}

}  // namespace qvn::bench
