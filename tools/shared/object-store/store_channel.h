// StoreChannel: the objects in a Bpd scanner, asked directly.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bidi/element/element.h"

namespace qvn::object_store {

// What the device or the way to it says no to; the library's result code tells why, 0 when there is none.
class StoreError : public std::runtime_error {
 public:
  explicit StoreError(const std::string& sentence, std::uint32_t code = 0)
      : std::runtime_error(sentence), code_(code) {}
  std::uint32_t code() const { return code_; }

 private:
  std::uint32_t code_;
};

// Something that the device sent and that replies to nothing.
struct StoreEvent {
  std::string tag;  // of a block that is no document: "Job.Start"; empty for a notification
  std::string observer;
  std::string object;
  std::string event;
  std::unique_ptr<Element> data;  // may be null
};

// One per process, which has not initialised the exported library meanwhile: both would load the transport.
class StoreChannel {
 public:
  // Opens the stored scanner. `onEvent` runs on the transport's thread; scan data and replies do not reach
  // it. This and all that talks to the device throws StoreError.
  explicit StoreChannel(std::uint32_t handle, std::function<void(const StoreEvent&)> onEvent = nullptr);
  // Ends the observations and the host mode, and closes.
  ~StoreChannel();
  StoreChannel(const StoreChannel&) = delete;
  StoreChannel& operator=(const StoreChannel&) = delete;

  // Enters the host mode, which lasts as long as the channel. Returns when the device has told that it is in
  // it.
  void enterHostMode();

  // Calls a method of an object. The result; null for a response without one.
  std::unique_ptr<Element> call(const std::string& object, const std::string& method, const Element* params);

  void observe(const std::string& object, const std::string& event);

 private:
  class Listener;
  struct Library;

  std::unique_ptr<Library> library_;
  std::vector<std::pair<std::string, std::string>> observed_;
  bool isInHostMode_ = false;
  std::unique_ptr<Listener> listener_;
};

}  // namespace qvn::object_store
