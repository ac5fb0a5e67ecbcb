// A program of others that takes print data on a TCP port of loopback and writes it into a file, as many a
// printer server does. One implementation for each program; whoever links one gets that one.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace qvn::test {

class RawReceiver {
 public:
  // Starts the program and returns when it takes connections. Throws std::runtime_error when it does not.
  static std::unique_ptr<RawReceiver> start();
  virtual ~RawReceiver() = default;

  virtual std::uint16_t port() const = 0;

  // Waits until it has written the one job that it was sent, whose connection is closed, and gives what it
  // wrote.
  virtual std::string receivedJob() = 0;
};

}  // namespace qvn::test
