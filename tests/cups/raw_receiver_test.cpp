// A print job from lp to a receiver that others wrote: the scheduler, the backend, a Bpd printer.
#include "raw_receivers/raw_receiver.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "cups/scheduler.h"
#include "support/noise.h"
#include "support/process/eventually.h"
#include "support/process/successful_run.h"

namespace qvn::test {
namespace {

TEST(CupsToRawReceiver, DeliversEveryByteOfAJobAndItsCopiesAndNoOthers) {
  const std::filesystem::path home = std::getenv("QVN_HOME");
  const std::unique_ptr<RawReceiver> receiver = RawReceiver::start();
  ok({"transport", "add", "qvn_ipv4.so"});
  ok({"device", "add", "--family", "BpdPrinter", "--transport", "IPv4", "--handle", "7", "--address",
      "127.0.0.1", "--portname", "RAW", "--set", "IpPort=" + std::to_string(receiver->port())});
  const Scheduler scheduler(home / "cups", home);
  ASSERT_EQ(scheduler.command({"lpadmin", "-p", "raw", "-v", "qvn://RAW", "-m", "raw", "-E"}).exitCode, 0);

  const std::string page = noise(2500000);
  std::ofstream(home / "page", std::ios::binary) << page;
  const Result sent =
      scheduler.command({"lp", "-d", "raw", "-o", "raw", "-n", "2", (home / "page").string()});
  ASSERT_EQ(sent.exitCode, 0) << sent.errors;
  ASSERT_TRUE(eventually([&] {
    return scheduler.command({"lpstat", "-o", "raw"}).output.empty();
  })) << scheduler.log();
  EXPECT_TRUE(receiver->receivedJob() == page + page) << scheduler.log();
}

}  // namespace
}  // namespace qvn::test
