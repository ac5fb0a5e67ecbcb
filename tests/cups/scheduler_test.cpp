// Print jobs from lp to the device's store: a real scheduler, the backend, library, transport, device.
#include "cups/scheduler.h"

#include <gmock/gmock.h>

#include "end_to_end/print/print_server.h"
#include "support/noise.h"
#include "support/process/eventually.h"

namespace qvn::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class Cups : public PrintServer {
 protected:
  void SetUp() override {
    if (!Scheduler::isInstalled())
      GTEST_SKIP() << "cupsd and lp are not installed (cups-daemon, cups-client)";
  }

  // The device, known to the machine, and a queue named "lab" for it.
  void startQueue(const std::string& uri = "qvn://IP_SIM0000001") {
    start();
    const std::filesystem::path home = std::getenv("QVN_HOME");
    scheduler_ = std::make_unique<Scheduler>(home / "cups", home);
    command({"lpadmin", "-p", "lab", "-v", uri, "-m", "raw", "-E"});
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
  device().command("fault slow-print=0");
  print(file("a.prn", noise(2000000)));
  ASSERT_TRUE(queueSays("sending the job"));
  EXPECT_THAT(queue(), Not(HasSubstr("media-empty")));
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
