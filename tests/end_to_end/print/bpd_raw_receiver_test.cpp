// A print job on a plain printer, from the exported functions to a receiver that others wrote.
#include "end_to_end/library_client.h"
#include "raw_receivers/raw_receiver.h"
#include "support/noise.h"
#include "support/process/successful_run.h"

namespace qvn::test {
namespace {

using RawPrinting = LibraryClient;

TEST_F(RawPrinting, GetsEveryByteOfAJobAndNoOthers) {
  const std::unique_ptr<RawReceiver> receiver = RawReceiver::start();
  ok({"device", "add", "--family", "BpdPrinter", "--transport", "IPv4", "--handle", "7", "--address",
      "127.0.0.1", "--portname", "RAW", "--set", "IpPort=" + std::to_string(receiver->port())});
  const std::string job = noise(5000000);
  ASSERT_EQ(QvnOpenPrinter(client, 7), 0u);
  printJob(7, "letter", job);
  EXPECT_TRUE(receiver->receivedJob() == job);
  EXPECT_EQ(QvnClosePrinter(client, 7), 0u);
}

}  // namespace
}  // namespace qvn::test
