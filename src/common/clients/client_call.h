// How the library calls its clients.
#pragma once

#include <exception>
#include <optional>
#include <string>

#include "common/exception.h"

namespace qvn {

// One call of a client's callback. Every callback is called through here and nowhere else.
class ClientCall {
 public:
  // Runs the call and contains whatever the client throws: nothing, or a description of what it threw.
  template <typename Call>
  static std::optional<std::string> run(Call&& call) {
    const Running running;
    try {
      call();
      return std::nullopt;
    } catch (const Exception& exception) {
      return exception.describe();
    } catch (const std::exception& exception) {
      return exception.what();
    } catch (...) {
      return "unknown exception";
    }
  }

  // Whether the calling thread is inside a client's callback. There nothing may wait for another callback,
  // for the end of a thread or an object, or for a lock that is held while clients are called
  // (OperationLock).
  static bool isRunning() { return depth_ > 0; }

 private:
  struct Running {
    Running() { ++depth_; }
    ~Running() { --depth_; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
  };

  static inline thread_local int depth_ = 0;
};

}  // namespace qvn
