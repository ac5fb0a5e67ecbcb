// The library, initialised for the life of one command.
#pragma once

#include <cstdint>

namespace qvn::cli {

class Session {
 public:
  // Throws Failure when the library cannot be initialised.
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  std::uint32_t client() const { return client_; }

 private:
  std::uint32_t client_ = 0;
};

}  // namespace qvn::cli
