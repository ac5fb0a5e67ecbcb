// What qvn watch and qvn cache show of a device that raises alerts and prints.
#include <gmock/gmock.h>
#include <signal.h>

#include <nlohmann/json.hpp>

#include "end_to_end/print/print_server.h"

namespace qvn::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

// qvn watch, listening.
class Watching : public PrintServer {
 protected:
  void watch(std::vector<std::string> options) {
    options.insert(options.begin(), {QVN_COMMAND, "watch"});
    watch_ = std::make_unique<Child>(options);
    ASSERT_THAT(watch_->readErrorLine().value_or("nothing"), StartsWith("watching 1 printer"));
  }
  Child& watcher() { return *watch_; }

 private:
  std::unique_ptr<Child> watch_;
};

TEST_F(Watching, ShowsAlertsInWordsAsTheyCome) {
  start();
  watch({"--json", "--raw", "--count", "3"});
  device().command("status 1 0x4000");
  device().command("status 00 0");
  device().command("alert A500 0680 F0E1 0102 03");
  json events = json::array();
  while (const auto line = watcher().readLine()) events.push_back(json::parse(*line));
  EXPECT_EQ(watcher().wait(), 0);
  ASSERT_EQ(events.size(), 3u);
  EXPECT_EQ(events[0]["event"], "alert");
  EXPECT_EQ(events[0]["words"], "busy: out of paper");
  EXPECT_EQ(events[0]["busy"], true);
  EXPECT_EQ(events[0]["reasons"], json({"media-empty-error"}));
  EXPECT_THAT(events[0]["packet"].get<std::string>(), StartsWith("A5 00"));
  EXPECT_EQ(events[1]["words"], "idle: ready");
  EXPECT_EQ(events[2]["words"], "the operator panel has changed");
}

TEST_F(Watching, ShowsTheJobsOfOtherProgramsByTheirStatusAlerts) {
  start();
  watch({"--count", "2"});
  const std::string job = file("a.prn", "some data");
  if (!DeviceLink::servesSeveralHosts()) {
    EXPECT_THAT(qvn({"print", job}).errors, HasSubstr("QRN_ERROR_BUSY"));
    watcher().signal(SIGINT);
    EXPECT_EQ(watcher().wait(), 130);
    return;
  }
  ok({"print", job});
  EXPECT_THAT(watcher().readLine().value_or(""), HasSubstr("busy: ready"));
  EXPECT_THAT(watcher().readLine().value_or(""), HasSubstr("idle: ready"));
  EXPECT_EQ(watcher().wait(), 0);
}

TEST_F(Watching, EndsOnCtrlCAndLeavesThePrinterToOthers) {
  start();
  watch({});
  watcher().signal(SIGINT);
  EXPECT_EQ(watcher().wait(), 130);
  EXPECT_THAT(watcher().errors(), HasSubstr("stopped watching"));
  ok({"print", file("a.prn", "some data")});
}

TEST_F(Watching, SaysWhyAPrinterCannotBeHeard) {
  start();
  device().command("quit");
  const Result none = qvn({"watch"});
  EXPECT_EQ(none.exitCode, 1);
  EXPECT_THAT(none.errors, HasSubstr("there is no printer to watch"));
  EXPECT_EQ(qvn({"watch", "--device", "NOWHERE"}).exitCode, 1);
}

TEST_F(Watching, TheCacheIsDecoded) {
  start();
  device().command("status 01 0x0800");
  const json entries = json::parse(ok({"cache", "--json"}));
  EXPECT_EQ(entries, json::parse(R"([{"entry":17,"bytes":"01","meaning":"a job is open"},
                                     {"entry":18,"bytes":"08 00","meaning":"cover open"}])"));
  EXPECT_THAT(ok({"cache"}), HasSubstr("cover open"));
  EXPECT_EQ(ok({"cache", "--raw"}).size(), 3u * (7 + 4 + 5));
}

}  // namespace
}  // namespace qvn::test
