// How the simulated printer takes, ends and records print jobs.
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>

#include "support/content_of.h"
#include "support/simulator/simulator_process.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {
namespace {

const Bytes kMarker = hex("1B 2A 82 00 00 00 00 AC");
constexpr char kStartJob[] = "A5 00 06 50 05 00 00 00 00";
constexpr char kQueryJobs[] = "A5 00 08 50 05 02 00 00 00 00 01";
constexpr char kCancelAcknowledge[] = "A5 00 09 20 F0 73 01 01 08 01 08 00";
constexpr std::size_t kCompleteLength = 26;

class SimulatedJobs : public testing::Test {
 protected:
  SimulatedJobs() : jobs(std::filesystem::path(std::getenv("QVN_HOME")) / "jobs") {}

  void TearDown() override { std::filesystem::remove_all(jobs); }

  std::vector<std::string> arguments(std::vector<std::string> more = {}) const {
    more.insert(more.end(), {"--events", "--jobs", jobs.string()});
    return more;
  }

  Bytes stored(int id) const { return bytesOf(contentOf(jobs / ("job-" + std::to_string(id) + ".prn"))); }
  bool isStored(int id) const {
    return std::filesystem::exists(jobs / ("job-" + std::to_string(id) + ".prn"));
  }

  const std::filesystem::path jobs;
};

Stream bidiOf(const SimulatorProcess& device) { return Stream::connect(device.address(), device.bidiPort()); }
Stream printOf(const SimulatorProcess& device) {
  return Stream::connect(device.address(), device.printPort());
}

std::size_t queryLength(Stream& bidi) {
  bidi.send(hex(kQueryJobs));
  return bidi.receivePacket().size();
}

// The device takes in what has come in turns of several reads, one of which may end with a connection.
TEST_F(SimulatedJobs, HearsTheNextHostHoweverManyHaveComeAtOnce) {
  SimulatorProcess device(arguments({"--family", "BpdPrinter", "--plain"}));
  int job = 0;
  for (int hosts = 1; hosts <= 6; ++hosts) {
    device.signal(SIGSTOP);
    for (int host = 0; host < hosts; ++host) printOf(device).send(bytesOf("all of it"));
    device.signal(SIGCONT);
    for (int host = 0; host < hosts; ++host) EXPECT_EQ(device.nextJob()["id"], ++job);
  }
}

TEST_F(SimulatedJobs, RunsAJobFromStartToPrinted) {
  SimulatorProcess device(arguments());
  Stream print = printOf(device);
  Stream bidi = bidiOf(device);
  EXPECT_EQ(bidi.ask(kStartJob), "A5 00 06 20 05 00 00 00 01");
  print.send(bytesOf("page"));
  EXPECT_NE(queryLength(bidi), kCompleteLength);
  EXPECT_EQ(bidi.ask("A5 00 06 50 05 01 00 00 01"), "A5 00 06 20 05 01 00 00 01");
  EXPECT_NE(queryLength(bidi), kCompleteLength) << "the end was announced, but the data is still missing";
  print.send(kMarker);
  const nlohmann::json record = device.nextJob();
  EXPECT_EQ(queryLength(bidi), kCompleteLength);
  EXPECT_EQ(record.at("id"), 1);
  EXPECT_EQ(record.at("bytes"), 4);
  EXPECT_EQ(record.at("outcome"), "complete");
  EXPECT_EQ(std::string(record.at("started")).size(), std::string("2002-01-11T00:00:00.000Z").size());
  EXPECT_LE(std::string(record.at("started")), std::string(record.at("ended")));
  EXPECT_EQ(stored(1), bytesOf("page"));
  EXPECT_EQ(nlohmann::json::parse(contentOf(jobs / "job-1.json")), record);
}

TEST_F(SimulatedJobs, FindsTheMarkerHoweverItIsSplit) {
  SimulatorProcess device(arguments());
  Stream print = printOf(device);
  // The data ends in what could begin a marker, so that a false start is in play as well.
  const Bytes data = bytesOf("data") + hex("1B 2A 82 00 1B 1B 2A");
  int id = 0;
  for (std::size_t split = 0; split <= kMarker.size(); ++split) {
    const auto middle = kMarker.begin() + static_cast<std::ptrdiff_t>(split);
    Stream bidi = bidiOf(device);
    print.send(data + Bytes(kMarker.begin(), middle));
    queryLength(bidi);  // has the device read so far
    print.send(Bytes(middle, kMarker.end()));
    EXPECT_EQ(device.nextJob().at("bytes"), data.size()) << "split after " << split;
    EXPECT_EQ(stored(++id), data) << "split after " << split;
  }
}

TEST_F(SimulatedJobs, TakesSeveralJobsOnOneConnectionAndLetsTheNextConnectionWait) {
  SimulatorProcess device(arguments());
  Stream first = printOf(device);
  Stream second = printOf(device);
  second.send(bytesOf("three") + kMarker);
  first.send(bytesOf("one") + kMarker + bytesOf("two") + kMarker);
  EXPECT_EQ(device.nextJob().at("bytes"), 3);
  EXPECT_EQ(device.nextJob().at("bytes"), 3);
  first.close();
  EXPECT_EQ(device.nextJob().at("id"), 3);
  EXPECT_EQ(stored(1), bytesOf("one"));
  EXPECT_EQ(stored(2), bytesOf("two"));
  EXPECT_EQ(stored(3), bytesOf("three"));
}

TEST_F(SimulatedJobs, DropsAJobThatEndsInZeroBytes) {
  SimulatorProcess device(arguments());
  Stream bidi = bidiOf(device);
  Stream print = printOf(device);
  bidi.ask(kStartJob);
  print.send(bytesOf("half a page") + repeated(4096, 0));
  EXPECT_EQ(toHex(bidi.receivePacket()), kCancelAcknowledge);
  print.send(repeated(4096, 0));  // already on its way when the acknowledgement came
  bidi.ask("A5 00 06 50 05 01 00 00 01");
  const nlohmann::json record = device.nextJob();
  EXPECT_EQ(record.at("outcome"), "cancelled");
  EXPECT_EQ(record.at("bytes"), 11);
  EXPECT_FALSE(isStored(1));
  EXPECT_EQ(queryLength(bidi), kCompleteLength);
  // What is left of the zero bytes does not get into the next job.
  print.send(repeated(100, 0) + bytesOf("next") + kMarker);
  EXPECT_EQ(device.nextJob().at("bytes"), 4);
}

TEST_F(SimulatedJobs, KeepsZeroBytesInsideAJob) {
  SimulatorProcess device(arguments());
  Stream bidi = bidiOf(device);
  Stream print = printOf(device);
  bidi.ask(kStartJob);
  print.send(repeated(8192, 0));
  EXPECT_EQ(toHex(bidi.receivePacket()), kCancelAcknowledge) << "until the device knows better";
  print.send(bytesOf("more") + kMarker);
  const nlohmann::json record = device.nextJob();
  EXPECT_EQ(record.at("outcome"), "complete");
  EXPECT_EQ(stored(1), repeated(8192, 0) + bytesOf("more"));
}

TEST_F(SimulatedJobs, AreNotPrintedWhenTheyNeverFinish) {
  SimulatorProcess device(arguments({"--fault", "never-finish"}));
  Stream bidi = bidiOf(device);
  printOf(device).send(bytesOf("page") + kMarker);
  EXPECT_EQ(device.nextJob().at("outcome"), "complete");
  EXPECT_EQ(bidi.ask(kQueryJobs), "A5 00 08 20 05 02 00 00 00 00 00");
  device.command("clear-faults");
  EXPECT_EQ(queryLength(bidi), kCompleteLength);
}

TEST_F(SimulatedJobs, TellsWhatBecomesOfJobsThatAreCutShort) {
  SimulatorProcess device(arguments());
  Stream print = printOf(device);
  print.send(bytesOf("cut") + Bytes(kMarker.begin(), kMarker.begin() + 5));
  print.close();
  nlohmann::json record = device.nextJob();
  EXPECT_EQ(record.at("outcome"), "lost");
  EXPECT_EQ(stored(1), bytesOf("cut") + Bytes(kMarker.begin(), kMarker.begin() + 5));

  Stream bidi = bidiOf(device);
  bidi.ask(kStartJob);
  bidi.close();  // the host that started it is gone
  record = device.nextJob();
  EXPECT_EQ(record.at("id"), 2);
  EXPECT_EQ(record.at("outcome"), "lost");

  Stream again = bidiOf(device);
  again.ask(kStartJob);
  again.ask("A5 00 06 50 05 01 00 00 03");  // ended without any data
  record = device.nextJob();
  EXPECT_EQ(record.at("outcome"), "complete");
  EXPECT_EQ(record.at("bytes"), 0);

  printOf(device).send(bytesOf("open"));
  device.nextJob();
  Stream open = printOf(device);
  open.send(bytesOf("open"));
  queryLength(again);
  device.command("quit");
  EXPECT_EQ(device.nextJob().at("outcome"), "lost") << "open when the device was switched off";
}

TEST_F(SimulatedJobs, KeepsEveryByteThatAPlainPrinterGets) {
  SimulatorProcess device(arguments({"--family", "BpdPrinter", "--plain"}));
  EXPECT_EQ(device.bidiPort(), 0);
  EXPECT_EQ(device.readyLine().at("family"), "BpdPrinter");
  const Bytes data = bytesOf("one") + kMarker + bytesOf("two") + repeated(8192, 0);
  printOf(device).close();  // whoever only looks whether it is there prints nothing
  Stream print = printOf(device);
  print.send(data);
  print.close();
  const nlohmann::json record = device.nextJob();
  EXPECT_EQ(record.at("id"), 1);
  EXPECT_EQ(record.at("outcome"), "complete");
  EXPECT_EQ(record.at("bytes"), data.size());
  EXPECT_TRUE(stored(1) == data);
}

TEST_F(SimulatedJobs, EndsABpdPrintersJobWithItsEndOrItsConnection) {
  SimulatorProcess device(arguments({"--family", "BpdPrinter"}));
  Stream bidi = bidiOf(device);
  Stream print = printOf(device);
  bidi.send(
      hex("A5 00 10 80 A4 5B A4 5B 10 EF A4 5B 11 EE 00 FF 13 EC 2E"));  // there is no reply to this one
  EXPECT_EQ(bidi.ask(kStartJob), "A5 00 06 20 05 00 00 00 01");
  print.send(bytesOf("first") + kMarker);
  EXPECT_EQ(bidi.ask("A5 00 06 50 05 01 00 00 01"), "A5 00 06 20 05 01 00 00 01");
  EXPECT_EQ(device.nextJob().at("outcome"), "complete") << "with its connection still open";
  EXPECT_EQ(queryLength(bidi), kCompleteLength);
  EXPECT_EQ(stored(1), bytesOf("first") + kMarker);

  // The next one on the same connection is over when yet another one begins.
  bidi.ask(kStartJob);
  print.send(bytesOf("second"));
  bidi.ask("A5 00 06 50 05 01 00 00 02");
  bidi.ask(kStartJob);
  EXPECT_EQ(device.nextJob().at("bytes"), 6);
  print.send(bytesOf("the third"));
  print.close();
  const nlohmann::json third = device.nextJob();
  EXPECT_EQ(third.at("id"), 3);
  EXPECT_EQ(third.at("outcome"), "complete");
  EXPECT_EQ(bidi.ask("A5 00 06 50 05 01 00 00 03"), "A5 00 06 20 05 01 00 00 03")
      << "which it has been told late";

  // A slow device still has most of the data to take when it hears of the end.
  device.command("fault slow-print=200000");
  bidi.ask(kStartJob);
  Stream slow = printOf(device);
  slow.send(repeated(10000, 'x'));
  bidi.ask("A5 00 06 50 05 01 00 00 04");
  EXPECT_EQ(device.nextJob().at("bytes"), 10000);
}

TEST_F(SimulatedJobs, NumbersOnFromTheJobsItFindsAndKeepsOnlyWhatItIsTold) {
  std::filesystem::create_directories(jobs);
  std::ofstream(jobs / "job-41.json") << "{}";
  SimulatorProcess device(arguments({"--discard"}));
  Stream bidi = bidiOf(device);
  bidi.ask(kStartJob);
  bidi.ask("A5 00 0A 50 E0 02 00 2A 04 61 62 63 00");
  printOf(device).send(bytesOf("gone") + kMarker);
  const nlohmann::json record = device.nextJob();
  EXPECT_EQ(record.at("id"), 42);
  EXPECT_EQ(record.at("name"), "abc");
  EXPECT_EQ(record.at("bytes"), 4);
  EXPECT_TRUE(std::filesystem::exists(jobs / "job-42.json"));
  EXPECT_FALSE(isStored(42));
}

}  // namespace
}  // namespace qvn::test
