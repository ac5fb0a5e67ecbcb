// What qvn store says to the objects in a simulated Bpd scanner, and hears from them.
#include <gmock/gmock.h>
#include <signal.h>

#include <nlohmann/json.hpp>

#include "end_to_end/scan/scan_station.h"

namespace qvn::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class StoreCommand : public ScanStation {
 protected:
  StoreCommand() : ScanStation(kBpd) {}
  void SetUp() override { start(); }
};

class CpdStoreCommand : public ScanStation {};

TEST_F(StoreCommand, CallsMethodsAndPrintsTheirResults) {
  EXPECT_EQ(ok({"store", "call", "system", "exitHostUSBSendMode"}), "0\n");
  EXPECT_EQ(
      ok({"store", "call", "system", "enterHostUSBSendMode", R"({"scanParameters": {"darkness": -1}})"}),
      "0\n");
  // Jobs are made in host mode, which the next call finds free again.
  for (const char* const job : {"\"HostSendJob_1\"\n", "\"HostSendJob_2\"\n"}) {
    EXPECT_EQ(ok({"store", "call", "--host-mode", "jobFactory", "create",
                  R"(["HostSendJob", {
                    "scanParameters": {"resolution": 300, "scanWindow": {"topLeft": {}, "bottomRight": {}}},
                    "documentParameters": {}, "usbParameters": {}}])"}),
              job);
  }
}

TEST_F(StoreCommand, SaysWhatIsWrong) {
  const struct {
    std::vector<std::string> words;
    int exitCode;
    const char* error;
  } rows[] = {
      {{"store", "call", "system", "nothing"}, 1, "exception: system has no method nothing"},
      {{"store", "call", "jobFactory", "create", R"(["HostSendJob", {}])"}, 1, "exception: not in host mode"},
      {{"store", "call", "system", "x", R"({"a\"b": 1})"}, 2, "quote"},
      {{"store", "call", "system", "x", R"({"_hidden": 1})"}, 2, "not sent"},
      {{"store", "call", "system", "x", R"(["\u0007"])"}, 2, "control characters"},
      {{"store", "call", "system\x1B[m", "x"}, 2, "control characters"},
      {{"store", "call", "system\xFF", "x"}, 2, "not UTF-8"},
      {{"store", "watch", "a\rb", "x"}, 2, "control characters"},
      {{"store", "call", "a<b", "start"}, 2, "markup"},
      {{"store", "call", "system", "a&b"}, 2, "markup"},
      {{"store", "call", "system", "x", "["}, 2, "no JSON"},
      {{"store", "watch", "system"}, 2, "belong together"},
      {{"store", "watch", "system", "nothing"}, 1, "no event"},
      {{"store", "call", "system", "x", "--device", "40399"}, 1, "40399"},
  };
  for (const auto& row : rows) {
    const Result result = qvn(row.words);
    EXPECT_EQ(result.exitCode, row.exitCode) << testing::PrintToString(row.words) << result.errors;
    EXPECT_THAT(result.errors, HasSubstr(row.error));
  }
}

TEST_F(StoreCommand, SaysThatAnotherHostIsInHostModeOrThatItFails) {
  device().order("fault busy");
  const std::vector<std::string> create = {"store", "call", "--host-mode", "jobFactory", "create", "[]"};
  EXPECT_THAT(qvn(create).errors, HasSubstr("another host may have it"));
  device().order("clear-faults");
  device().order("fault host-mode-fail");
  EXPECT_THAT(qvn(create).errors, HasSubstr("could not go into host mode"));
}

TEST_F(StoreCommand, ShowsWhatTheDeviceTellsUntilCtrlC) {
  Child watch({QVN_COMMAND, "store", "watch", "system", "systemUpdate"});
  EXPECT_EQ(watch.readErrorLine(), "watching scanner " + DeviceLink::scannerHandle());
  const std::vector<std::string> enter = {"store", "call", "system", "enterHostUSBSendMode", "{}"};
  if (!DeviceLink::servesSeveralHosts()) {
    EXPECT_THAT(qvn(enter).errors, HasSubstr("QRN_ERROR_BUSY"));
    return;
  }
  EXPECT_EQ(ok(enter), "0\n");
  const json entered = json::parse(watch.readLine().value_or("null"));
  EXPECT_EQ(entered.value("event", ""), "systemUpdate");
  EXPECT_EQ(entered.value("data", ""), "Enter HostSend OK");
  // A value of a type that the library does not know makes it write to standard output, which has JSON alone.
  const std::string unknown =
      R"(<?xml version="1.0"?><method name="event"><arg name="observer">qvn</arg><arg name="objName">system</arg>)"
      R"(<arg name="event">systemUpdate</arg><arg name="data"><NewElem>1</NewElem></arg></method>)";
  std::string hex;
  for (const char byte : unknown) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    hex += {kDigits[byte / 16], kDigits[byte % 16]};
  }
  device().command("block " + hex);
  EXPECT_EQ(json::parse(watch.readLine().value_or("null")).value("event", ""), "systemUpdate");
  device().command("block 3C52696E673E");
  const json block = json::parse(watch.readLine().value_or("null"));
  EXPECT_EQ(block.value("block", ""), "Ring");
  watch.signal(SIGINT);
  EXPECT_EQ(watch.wait(), 130);
  EXPECT_THAT(watch.errors(), HasSubstr("UNKNOWN TYPE"));
}

TEST_F(CpdStoreCommand, TheScannerHasNoObjects) {
  start();
  const Result result = qvn({"store", "call", "system", "x"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, HasSubstr("no Bpd scanner"));
}

}  // namespace
}  // namespace qvn::test
