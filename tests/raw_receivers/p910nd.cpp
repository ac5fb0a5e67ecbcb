// p910nd, the print server of diskless hosts: takes one connection after the other on port 9100 + N, with a
// lock file in a directory that only its start script makes.
#include <poll.h>
#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>

#include "raw_receivers/raw_receiver.h"
#include "support/content_of.h"
#include "support/private_network.h"
#include "support/process/child.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {
namespace {

constexpr char kLocks[] = "/run/lock/p910nd";
constexpr std::uint16_t kFirstPort = 9100;

bool isListening(std::uint16_t port) {
  try {
    Stream::connect("127.0.0.1", port);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

class P910nd : public RawReceiver {
 public:
  P910nd() : file_(std::filesystem::path(std::getenv("QVN_HOME")) / "p910nd.out") {
    // Without a network of its own the test takes a port that nobody has, and the machine's lock directory.
    enterPrivateNetwork();
    madeLocks_ = std::filesystem::create_directories(kLocks);
    while (isListening(port_) && port_ < kFirstPort + 9) ++port_;
    std::ofstream{file_};
    child_.emplace(std::vector<std::string>{"/bin/sh", "-c",
                                            "exec p910nd -d -f " + file_.string() + " -i 127.0.0.1 " +
                                                std::to_string(port_ - kFirstPort) + " >/dev/null"});
    // It does not say when it is ready.
    for (int tries = 0; !isListening(port_); ++tries) {
      if (tries == 1000) throw std::runtime_error("p910nd does not listen on port " + std::to_string(port_));
      poll(nullptr, 0, 10);
    }
  }
  ~P910nd() override {
    child_->signal(SIGTERM);
    child_->wait();
    // It leaves its lock file, and another user could not use a directory of ours.
    std::error_code ignored;
    std::filesystem::remove(std::string(kLocks) + "/p" + std::to_string(port_) + "d", ignored);
    if (madeLocks_) std::filesystem::remove(kLocks, ignored);
  }

  std::uint16_t port() const override { return port_; }

  std::string receivedJob() override {
    // It turns to the next connection when it has written all of the last one.
    Stream next = Stream::connect("127.0.0.1", port_);
    next.endSending();
    if (!next.isEnded()) throw std::runtime_error("p910nd does not come to an end");
    return contentOf(file_);
  }

 private:
  const std::filesystem::path file_;
  std::uint16_t port_ = kFirstPort;
  bool madeLocks_ = false;
  std::optional<Child> child_;
};

}  // namespace

std::unique_ptr<RawReceiver> RawReceiver::start() { return std::make_unique<P910nd>(); }

}  // namespace qvn::test
