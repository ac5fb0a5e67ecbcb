// Print jobs from a file to the device's store: command line, library, transport, device.
#include <gmock/gmock.h>
#include <signal.h>

#include "end_to_end/print/print_server.h"
#include "support/noise.h"

namespace qvn::test {
namespace {

using testing::HasSubstr;

using Printing = PrintServer;

TEST_F(Printing, DeliversEveryByteWithAndWithoutTheBufferedWriter) {
  start();
  int job = 0;
  for (const char* buffered : {"1", "0"}) {
    ok({"settings", "set", "CpdPrinterMwo", buffered});
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{262144}, std::size_t{3000000}}) {
      SCOPED_TRACE("CpdPrinterMwo " + std::string(buffered) + ", " + std::to_string(size) + " bytes");
      const std::string data = noise(size);
      const std::string said = ok({"print", file("a.prn", data), "--user", "anna", "--job", "accounts"});
      EXPECT_THAT(said, HasSubstr("printed 'accounts' on printer"));
      EXPECT_EQ(device().nextJob().at("outcome"), "complete");
      EXPECT_TRUE(stored(++job) == data);
    }
  }
}

TEST_F(Printing, MakesAJobOfEachFileAndOfStandardInput) {
  start();
  const std::string said = ok({"print", file("a.prn", "first"), "-", file("b.prn", "third")}, "second");
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 3);
  for (int job = 1; job <= 3; ++job) EXPECT_EQ(device().nextJob().at("outcome"), "complete");
  EXPECT_EQ(stored(1), "first");
  EXPECT_EQ(stored(2), "second");
  EXPECT_EQ(stored(3), "third");
}

TEST_F(Printing, TellsWhetherThePrinterSaidThatItCameOut) {
  start();
  const std::string printed = ok({"print", "--json", "--copies", "2", file("a.prn", "12345")});
  EXPECT_EQ(printed, [] {
    const std::string line = R"({"job":"a.prn","handle":)" + DeviceLink::printerHandle() +
                             R"(,"portname":")" + DeviceLink::portname() +
                             R"(","bytes":5,"confirmed":true})"
                             "\n";
    return line + line;
  }());
  device().command("fault never-finish");
  ok({"settings", "set", "TeojDuration", "100"});
  EXPECT_EQ(ok({"print"}, "12345"), "sent 'standard input' to printer " + DeviceLink::printerHandle() + " (" +
                                        DeviceLink::portname() +
                                        "), 5 bytes; the printer did not say within "
                                        "0 s that "
                                        "it came out\n");
}

TEST_F(Printing, CancelsTheJobOnTheDeviceWhenInterrupted) {
  start();
  for (const auto& [buffered, signal] : {std::pair("1", SIGINT), std::pair("0", SIGHUP)}) {
    SCOPED_TRACE("CpdPrinterMwo " + std::string(buffered));
    ok({"settings", "set", "CpdPrinterMwo", buffered});
    Child printing({QVN_COMMAND, "print", "-"});
    // More than the pipe holds, so that the job has begun when the last of it is gone, and no end.
    printing.write(noise(1000000));
    printing.signal(signal);
    EXPECT_EQ(printing.wait(), 130);
    EXPECT_THAT(printing.errors(), HasSubstr("'standard input' on printer " + DeviceLink::printerHandle() +
                                             " was cancelled after "));
    EXPECT_EQ(device().nextJob().at("outcome"), "cancelled");
  }
  ok({"print", file("next.prn", "next")});
  EXPECT_EQ(device().nextJob().at("outcome"), "complete");
  EXPECT_EQ(stored(3), "next");
}

TEST_F(Printing, SaysThatThePrinterRejectedTheJob) {
  start({"reject=start-job:1"});
  const Result rejected = qvn({"print", file("a.prn", noise(100000))});
  EXPECT_EQ(rejected.exitCode, 1);
  EXPECT_THAT(rejected.errors, HasSubstr("was rejected or cancelled by the printer"));
  ok({"print", file("b.prn", "next")});
  EXPECT_EQ(device().nextJob().at("outcome"), "complete");
  EXPECT_EQ(stored(1), "next");
}

TEST_F(Printing, FailsWhenTheConnectionBreaksInTheMiddleOfAnUnbufferedJob) {
  start({DeviceLink::breaksAfter(500000)});
  ok({"settings", "set", "CpdPrinterMwo", "0"});
  const Result result = qvn({"print", file("a.prn", noise(8000000))});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors,
              AllOf(HasSubstr("the printer closed the connection after "),
                    HasSubstr(" of 8.0 MB of 'a.prn' on printer "), HasSubstr("print it again")));
  EXPECT_EQ(device().nextJob().at("outcome"), "lost");
}

TEST_F(Printing, CanBeCancelledWhileTheBufferedWriterWaitsForALostDevice) {
  start({"close-mid-job=500000"});
  Child printing({QVN_COMMAND, "print", file("a.prn", noise(8000000))});
  EXPECT_EQ(device().nextJob().at("outcome"), "lost");
  printing.signal(SIGINT);
  EXPECT_EQ(printing.wait(), 130);
}

}  // namespace
}  // namespace qvn::test
