// socat: takes one connection and ends with it.
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "raw_receivers/raw_receiver.h"
#include "support/content_of.h"
#include "support/process/child.h"

namespace qvn::test {
namespace {

class Socat : public RawReceiver {
 public:
  Socat()
      : file_(std::filesystem::path(std::getenv("QVN_HOME")) / "socat.out"),
        child_({"/bin/sh", "-c",
                "exec socat -d -d -u TCP-LISTEN:0,bind=127.0.0.1 OPEN:" + file_.string() +
                    ",creat,trunc 2>&1"}) {
    const std::string listening = "listening on AF=2 127.0.0.1:";
    std::string said;
    while (port_ == 0) {
      const auto line = child_.readLine();
      if (!line) throw std::runtime_error("socat does not listen: " + said);
      said += *line + "\n";
      const std::size_t at = line->find(listening);
      if (at != std::string::npos)
        port_ = static_cast<std::uint16_t>(std::stoul(line->substr(at + listening.size())));
    }
  }

  std::uint16_t port() const override { return port_; }

  std::string receivedJob() override {
    child_.wait();
    return contentOf(file_);
  }

 private:
  const std::filesystem::path file_;
  Child child_;
  std::uint16_t port_ = 0;
};

}  // namespace

std::unique_ptr<RawReceiver> RawReceiver::start() { return std::make_unique<Socat>(); }

}  // namespace qvn::test
