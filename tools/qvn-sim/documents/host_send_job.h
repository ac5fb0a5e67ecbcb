// A job in which the scanner of a BpdPrinter sends pages to its host, from its start to its end.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "base/connection_id.h"
#include "documents/element.h"
#include "page/scan_engine.h"
#include "page/scan_settings.h"

namespace sim {

class HostSendJob {
 public:
  // What a job lets its host know; in this order on the wire, a page's data in its place.
  struct Output {
    std::function<void(std::string_view event, const Element& data)> notify;
    std::function<void(std::string_view tag)> mark;
    std::function<void(const ScanSettings&)> beginPage;
    // Ends the page after the block that has begun, and then tells of it; false when none is sent.
    std::function<bool()> cutPage;
  };

  HostSendJob(ConnectionId host, std::string name, const ScanSettings& settings, ScanEngine& engine,
              Output output);

  const std::string& name() const { return name_; }
  bool isRunning() const { return state_ == State::Scanning || state_ == State::WaitingForOriginal; }

  // Whether it can start; not twice. When a sheet is to come from an empty feeder the host is told so.
  bool isReady();
  void start();
  void cancel();
  // Whether it was waiting for another original; there is none, so it ends.
  bool isWaitingForOriginal() const { return state_ == State::WaitingForOriginal; }
  void originalDone() { complete(); }

  // The page begun last is over; `wasCut` when by a cancel.
  void pageOver(bool wasCut);

 private:
  enum class State : std::uint8_t { Created, Scanning, WaitingForOriginal, Over };

  void nextPage();
  void complete();
  void tellState(const char* state);

  const ConnectionId host_;
  const std::string name_;
  const ScanSettings settings_;
  ScanEngine& engine_;
  const Output output_;
  State state_ = State::Created;
};

}  // namespace sim
