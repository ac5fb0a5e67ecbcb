// The backend behind Debian's network daemon: a scan from another machine is the scan made here.
#include <signal.h>
#include <unistd.h>

#include "scanimage/sane_programs.h"

namespace qvn::test {
namespace {

// A loopback address of this process's own, since clients know the daemon at one port only.
std::string ownAddress() {
  const auto id = static_cast<unsigned>(getpid());
  return "127." + std::to_string(64 + (id >> 16) % 128) + "." + std::to_string(id >> 8 & 0xFF) + "." +
         std::to_string(id & 0xFF);
}

class Saned : public SanePrograms, public testing::WithParamInterface<const char*> {
 protected:
  Saned() : SanePrograms(GetParam()) {}

  void SetUp() override {
    for (const char* const program : {kDaemon, kScanimage}) {
      ASSERT_TRUE(std::filesystem::exists(program)) << "install sane-utils (scripts/setup.sh test)";
    }
    configure("server", {{"dll.conf", "qvn\n"}, {"saned.conf", address_ + "\n"}});
    configure("client", {{"dll.conf", "net\n"}, {"net.conf", "connect_timeout = 60\n" + address_ + "\n"}});
  }

  void startDaemon() {
    // In a process group of its own, which ends by itself should this test not end it; with few words, since
    // nobody reads on.
    daemon_ = std::make_unique<Child>(
        std::vector<std::string>{"/usr/bin/timeout", "--signal=KILL", "100", kDaemon, "--listen",
                                 "--bind=" + address_, "--stderr", "--debug=3"},
        environmentOf("server"));
    for (;;) {
      const auto line = daemon_->readErrorLine();
      ASSERT_TRUE(line) << "saned does not come up";
      if (line->find("waiting for control connection") != std::string::npos) return;
    }
  }

  void TearDown() override {
    if (daemon_) {
      // With the processes that it has started, which do not always follow it.
      kill(-daemon_->id(), SIGKILL);
      daemon_->wait();
      if (HasFailure()) std::cerr << daemon_->errors();
    }
    SanePrograms::TearDown();
  }

  const std::string& address() const { return address_; }

 private:
  static constexpr char kDaemon[] = "/usr/sbin/saned";

  const std::string address_ = ownAddress();
  std::unique_ptr<Child> daemon_;
};

INSTANTIATE_TEST_SUITE_P(Families, Saned, testing::Values(kCpd, kBpd), familyName);

TEST_P(Saned, ScansForAnotherMachineAsForThisOne) {
  start();
  startDaemon();
  const std::string far = "net:" + address() + ":qvn:IP_SIM0000001";
  for (const char* const mode : {"Color", "Lineart"}) {
    SCOPED_TRACE(mode);
    for (const auto& [from, device] :
         {std::pair{"server", std::string("qvn:IP_SIM0000001")}, {"client", far}}) {
      const Result scan = scanimage(from, {"-d", device, "--resolution", "100", "--mode", mode,
                                           "--format=png", "-o", out(std::string(from) + ".png")});
      EXPECT_EQ(scan.exitCode, 0) << from << scan.errors;
    }
    EXPECT_SAME_PICTURE(readPng(out("client.png")), readPng(out("server.png")));
  }
  EXPECT_SAME_PICTURE(sent(2), glass());
}

}  // namespace
}  // namespace qvn::test
