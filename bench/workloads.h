// The inner parts at work, shared by the micro-benchmarks and the rows on growth.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "device/store/handle_table.h"
#include "qvn/transport/data.h"
#include "qvn/transport/observer.h"
#include "qvn/transport/subject.h"

namespace qvn::bench {

// A subject with a number of observers that only count.
class NotifyWorkload {
 public:
  explicit NotifyWorkload(std::size_t observers) : observers_(observers), data_("packet") {
    for (Counter& counter : observers_) counter.attachTo(subject_);
  }
  ~NotifyWorkload() {
    for (Counter& counter : observers_) counter.detachFrom(subject_);
  }
  NotifyWorkload(const NotifyWorkload&) = delete;
  NotifyWorkload& operator=(const NotifyWorkload&) = delete;

  void run() { subject_.notify(data_); }

 private:
  class Counter : public Observer {
   protected:
    using Observer::doUpdate;
    void doUpdate(Data&) override { ++updates_; }

   private:
    std::uint64_t updates_ = 0;
  };

  Subject subject_;
  std::deque<Counter> observers_;
  Data data_;
};

// A handle table with a number of live objects, one of which is taken and given back.
class HandleWorkload {
 public:
  explicit HandleWorkload(std::uint32_t live) : handle_(live / 2) {
    for (std::uint32_t handle = 0; handle < live; ++handle) table_.acquire(handle);
  }

  void run() {
    const auto object = table_.acquire(handle_);
    table_.release(handle_);
  }

 private:
  struct Object {};
  class Table final : public HandleTable<Object> {
   protected:
    std::uint32_t restore(std::uint32_t handle) override {
      add(handle, std::make_shared<Object>());
      return 0;
    }
  };

  Table table_;
  std::uint32_t handle_;
};

// A buffer that grows piece by piece and is emptied piece by piece.
class DataWorkload {
 public:
  explicit DataWorkload(std::uint32_t pieces) : pieces_(pieces), piece_(kPieceSize, 'd') {}

  void append() {
    data_.reset();
    for (std::uint32_t piece = 0; piece < pieces_; ++piece) data_.append(piece_.data(), kPieceSize);
  }
  void consume() {
    while (data_.getLength() != 0) data_.consume(kPieceSize, false);
  }

 private:
  static constexpr std::uint32_t kPieceSize = 512;

  std::uint32_t pieces_;
  std::vector<std::uint8_t> piece_;
  Data data_;
};

}  // namespace qvn::bench
