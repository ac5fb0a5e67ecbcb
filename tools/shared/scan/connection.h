// A scanner that the library has open, with the registration for what it sends.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "shared/scan/receiver.h"

namespace qvn::scan {

class Connection {
 public:
  // Throws Error.
  explicit Connection(std::uint32_t handle);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  std::uint32_t client() const { return client_; }

  // From now on what the scanner sends goes to the receiver, or nowhere.
  void attach(std::shared_ptr<Receiver> receiver);
  // A delivery that is running keeps the receiver.
  void detach() noexcept;

 private:
  std::uint32_t client_ = 0;
  std::uint32_t handle_;
};

// Throws Error with the sentence unless the library's result code is success.
void requireSuccess(std::uint32_t code, const std::string& sentence);

}  // namespace qvn::scan
