// Print jobs from lp to the device's store: a real scheduler, the backend, library, transport, device.
#include "cups/scheduler.h"

#include <gmock/gmock.h>

#include "end_to_end/print/print_server.h"
#include "support/noise.h"
#include "support/process/eventually.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {
namespace {

using testing::HasSubstr;

class Cups : public PrintServer {
 protected:
  // The device, known to the machine, and a queue named "lab" for it.
  void startQueue(std::uint16_t sharedAt = 0) {
    start();
    scheduler_ = std::make_unique<Scheduler>(home_ / "cups", home_, sharedAt);
    command({"lpadmin", "-p", "lab", "-v", "qvn://" + DeviceLink::portname(), "-m", "raw", "-E"});
  }

  void TearDown() override {
    if (HasFailure() && scheduler_) std::cerr << scheduler_->log();
    scheduler_.reset();
    PrintServer::TearDown();
  }

  std::string command(const std::vector<std::string>& arguments) {
    const Result result = scheduler_->command(arguments);
    EXPECT_EQ(result.exitCode, 0) << testing::PrintToString(arguments) << result.errors;
    return result.output;
  }
  void print(const std::string& path, std::vector<std::string> options = {}) {
    std::vector<std::string> arguments = {"lp", "-d", "lab", "-o", "raw", "-t", "accounts"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(path);
    command(arguments);
  }
  std::string queue() { return command({"lpstat", "-l", "-p", "lab"}); }
  bool queueSays(const std::string& words, bool wanted = true) {
    return eventually([&] { return (queue().find(words) != std::string::npos) == wanted; });
  }
  bool isDone() {
    return eventually([&] { return command({"lpstat", "-o", "lab"}).empty(); });
  }

  const std::filesystem::path home_ = std::getenv("QVN_HOME");

 private:
  std::unique_ptr<Scheduler> scheduler_;
};

TEST_F(Cups, DeliversJobsByteForByteAndTheirCopies) {
  startQueue();
  const std::string data = noise(3000000);
  print(file("a.prn", data));
  EXPECT_EQ(device().nextJob().at("outcome"), "complete");
  EXPECT_TRUE(stored(1) == data);

  print(file("b.prn", "twice\n"), {"-n", "2"});
  EXPECT_EQ(device().nextJob().at("outcome"), "complete");
  EXPECT_EQ(stored(2), "twice\ntwice\n");
  EXPECT_TRUE(isDone());
  EXPECT_THAT(queue(), HasSubstr("printer lab is idle"));
}

// Another machine's scheduler, which has neither the backend's transports nor the printer, prints through the
// queue that this one shares.
TEST_F(Cups, PrintsForTheSchedulerOfAnotherMachine) {
  const std::uint16_t port = Listener().port();
  startQueue(port);
  const Scheduler client(home_ / "client", home_ / "nothing");
  const auto ask = [&](const std::vector<std::string>& arguments) {
    const Result result = client.command(arguments);
    EXPECT_EQ(result.exitCode, 0) << testing::PrintToString(arguments) << result.errors;
    return result.output;
  };
  const std::string uri = "ipp://127.0.0.1:" + std::to_string(port) + "/printers/lab";
  ask({"lpadmin", "-p", "far", "-v", uri, "-m", "raw", "-E"});
  const std::string data = noise(3000000);
  ask({"lp", "-d", "far", "-o", "raw", "-t", "accounts", file("a.prn", data)});
  ASSERT_TRUE(eventually([&] { return ask({"lpstat", "-o", "far"}).empty(); })) << client.log();
  EXPECT_EQ(device().nextJob().at("outcome"), "complete");
  EXPECT_TRUE(stored(1) == data);
  EXPECT_TRUE(isDone());
}

TEST_F(Cups, WaitsForAPrinterThatSomebodyElseHas) {
  startQueue();
  ok({"settings", "set", "AIOLockEnabled", "1"});
  device().command("fault busy");
  print(file("a.prn", "patient"));
  ASSERT_TRUE(queueSays("connecting-to-device"));
  EXPECT_THAT(queue(), HasSubstr("trying again"));
  device().command("clear-faults");
  EXPECT_EQ(device().nextJob().at("outcome"), "complete");
  EXPECT_EQ(stored(1), "patient");
  EXPECT_TRUE(queueSays("connecting-to-device", false));
  ok({"settings", "set", "AIOLockEnabled", "0"});
}

TEST_F(Cups, ShowsTheAlertsOfThePrinterAsStatesOfTheQueue) {
  startQueue();
  device().command("fault " + DeviceLink::slowestPrint());
  print(file("a.prn", noise(2000000)));
  ASSERT_TRUE(queueSays("sending the job"));
  EXPECT_THAT(queue(), testing::Not(HasSubstr("media-empty")));
  device().command("status 1 16384");
  EXPECT_TRUE(queueSays("media-empty-error"));
  device().command("status 1 0");
  EXPECT_TRUE(queueSays("media-empty-error", false));
  device().command("clear-faults");
  EXPECT_EQ(device().nextJob().at("outcome"), "complete");
  EXPECT_TRUE(isDone());
}

}  // namespace
}  // namespace qvn::test
