// The bus as libusb gives it: one context, whose events are handled by whoever waits for one, and by a thread
// of its own while nobody does.
#pragma once

#include <libusb.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace qvn::usb1 {

class UsbBus {
 public:
  using Clock = std::chrono::steady_clock;

  UsbBus() = default;
  UsbBus(const UsbBus&) = delete;
  UsbBus& operator=(const UsbBus&) = delete;
  // When no device is open any more.
  ~UsbBus();

  // Before all others: 0, or why there is no bus.
  std::uint32_t start();

  libusb_context* context() const { return context_; }

  // Handles events until `done` is not 0 or the deadline has come. `done` is set with `finish`, by a callback
  // or on any thread.
  void waitFor(int& done, Clock::time_point deadline);
  void waitFor(int& done) { waitFor(done, Clock::time_point::max()); }

  static bool isFinished(int& done);
  // From a callback: whoever handles events returns from it by itself.
  static void finish(int& done);
  // From elsewhere.
  void finishFromOutside(int& done);

  // Ends the object soon, on the bus's thread: for what waits at its end, where nobody may wait. Any thread,
  // also from a callback.
  void dispose(std::shared_ptr<void> object);

 private:
  // Who waits for an event handles it, since to hand it over from thread to thread takes longer than most
  // transfers. The bus's thread stands aside meanwhile, and for a moment afterwards, since transfers come in
  // rows.
  enum class Stage : std::uint8_t { Handling, Aside, Lingering };
  class Waiting;

  void serve();

  libusb_context* context_ = nullptr;
  std::thread thread_;

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  Stage stage_ = Stage::Aside;
  int waiting_ = 0;                // threads that handle events
  std::uint64_t waits_ = 0;        // begun so far
  std::uint64_t lingeredFor_ = 0;  // of these
  std::vector<std::shared_ptr<void>> disposed_;
  bool stopping_ = false;
};

}  // namespace qvn::usb1
