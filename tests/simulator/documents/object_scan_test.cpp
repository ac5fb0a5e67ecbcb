// Scan jobs of a simulated BpdPrinter: their course, their pages, who may have one, and how they end.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "support/simulator/object_host.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;

std::vector<std::string> arguments(std::vector<std::string> more = {}) {
  more.insert(more.begin(), {"--family", "BpdPrinter"});
  return more;
}

// What the scanner of a CpdPrinter makes of the same settings.
Bytes pageOfCpdScanner(const ObjectScan& scan) {
  const SimulatorProcess device;
  ScanHost host(device);
  host.set(static_cast<std::uint16_t>(scan.dpi),
           scan.bits == 1   ? ScanFormat::BlackAndWhite
           : scan.bits == 8 ? ScanFormat::Gray
                            : ScanFormat::Color,
           scan.area);
  return host.scan().data;
}

TEST(SimulatedObjects, ScanTheGlassAndWaitForTheNextOriginal) {
  const SimulatorProcess device(arguments({"--block", "50000"}));
  ObjectHost host(device);
  host.enterHostMode();
  const ObjectScan kScans[] = {
      {75, 8, 0, {}},
      {150, 1, 0, {777, 333, 1001, 999}},
      {300, 24, 0, {1234, 4321, 2222, 1111}},
      {1200, 24, 0, {10100, 0, 100, 1000}},
  };
  for (const ObjectScan& scan : kScans) {
    SCOPED_TRACE(std::to_string(scan.dpi) + " dpi, " + std::to_string(scan.bits) + " bits");
    host.data.clear();
    host.dataLengths.clear();
    const std::string job = host.createJob(scan);
    host.startJob(job);
    EXPECT_THAT(
        host.receiveUntil("stateChanged Wait Next Original"),
        ElementsAre("stateChanged Warming", "stateChanged Scanning", "<Job.Start>", "<Page.Start>",
                    "<Scan.Data>", "<Page.End>", "pageScanned Flatbed", "stateChanged Wait Next Original"));
    const Bytes expected = pageOfCpdScanner(scan);
    EXPECT_TRUE(host.data == expected) << host.data.size() << " bytes instead of " << expected.size();
    EXPECT_EQ(host.dataLengths.size(), (expected.size() + 49999) / 50000);
    EXPECT_EQ(*std::max_element(host.dataLengths.begin(), host.dataLengths.end()),
              std::min<std::size_t>(50000, expected.size()));
    host.call(job + ".scanJob", "done");
    EXPECT_THAT(host.receiveUntil("<Job.End>"),
                ElementsAre("response 0", "stateChanged Complete", "<Job.End>"));
    host.call(job, "done");
    EXPECT_EQ(host.receive(), "response 0");
    for (const char* event : {"stateChanged", "pageScanned"}) {
      host.removeObserver(job, event);
      EXPECT_EQ(host.receive(), "response 0");
    }
  }
  host.call("system", "exitHostUSBSendMode");
  EXPECT_THAT(host.receiveAll(), ElementsAre("response 0", "systemUpdate HostSend Exited"));
}

TEST(SimulatedObjects, TakeTheLongestBlock) {
  EXPECT_NE(runSimulator(arguments({"--block", "131062"})), 0);
  const SimulatorProcess device(arguments({"--block", "131061"}));
  ObjectHost host(device);
  host.enterHostMode();
  host.startJob(host.createJob({75, 8, 0, {}}));
  host.receiveUntil("<Scan.Data>");
  EXPECT_EQ(host.payload().size(), 131072u);
}

TEST(SimulatedObjects, ScanTheFeederUntilItIsEmpty) {
  SimulatorProcess device(arguments({"--feeder", "2"}));
  ObjectHost host(device);
  host.enterHostMode();
  const ObjectScan scan{100, 24, 1, {600, 700, 3000, 1200}};
  host.startJob(host.createJob(scan));
  EXPECT_THAT(host.receiveUntil("<Job.End>"),
              ElementsAre("stateChanged Warming", "stateChanged Scanning", "<Job.Start>", "<Page.Start>",
                          "<Scan.Data>", "<Page.End>", "pageScanned ADF", "<Page.Start>", "<Scan.Data>",
                          "<Page.End>", "pageScanned ADF", "stateChanged Complete", "<Job.End>"));
  const Bytes page = pageOfCpdScanner(scan);
  EXPECT_TRUE(host.data == page + page);

  const std::string empty = host.createJob(scan);
  host.call(empty, "start");
  EXPECT_EQ(host.receive(), "stateChanged No Original");
  EXPECT_EQ(host.receive(), "response -1");
  device.command("load 1");
  host.startJob(empty);
  host.receiveUntil("<Job.End>");
  host.call(empty, "start");
  EXPECT_EQ(host.receive(), "response -1") << "not twice";
}

TEST(SimulatedObjects, StopAtTheNextBlockWhenCancelledOrWithoutTheHostMode) {
  const std::filesystem::path scans = std::filesystem::path(std::getenv("QVN_HOME")) / "scans";
  const SimulatorProcess device(arguments({"--scans", scans.string()}));
  ObjectHost host(device);
  host.enterHostMode();
  const std::string waiting = host.createJob({});
  host.startJob(waiting);
  host.receiveUntil("stateChanged Wait Next Original");
  std::filesystem::remove(scans / "page-1.png");
  host.call(waiting, "cancel");
  EXPECT_THAT(host.receiveAll(),
              ElementsAre("response 0", "stateChanged Cancelled", "stateChanged Complete", "<Job.End>"));

  for (const bool leaves : {false, true}) {
    const std::string job = host.createJob({1200, 24, 0, {}});
    host.startJob(job);
    host.receiveUntil("<Scan.Data>");
    leaves ? host.call("system", "exitHostUSBSendMode") : host.call(job, "cancel");
    std::vector<std::string> rest = host.receiveUntil("<Job.End>");
    std::erase(rest, "<Scan.Data>");
    EXPECT_EQ(std::erase(rest, "systemUpdate HostSend Exited"), leaves ? 1u : 0u);
    EXPECT_THAT(rest,
                ElementsAre("response 0", "stateChanged Cancelled", "stateChanged Complete", "<Job.End>"));
    EXPECT_LT(host.data.size(), std::size_t{100} << 20) << "of 430 MB";
    EXPECT_TRUE(std::filesystem::is_empty(scans));
    host.call(job, "cancel");
    EXPECT_THAT(host.receiveAll(), ElementsAre("response 0")) << "it has ended";
  }
}

TEST(SimulatedObjects, AreForOneHostAtATime) {
  const SimulatorProcess device(arguments());
  ObjectHost first(device);
  first.enterHostMode();
  const std::string job = first.createJob({1200, 24, 0, {}});
  first.startJob(job);
  EXPECT_EQ(first.receiveUntil("<Scan.Data>").back(), "<Scan.Data>");
  // The first host reads no more: its page waits, and everybody else is served.
  ObjectHost second(device);
  const std::string create = createParameters(scanParameters({}));
  second.addObserver("system", "systemUpdate", "Observer_System");
  second.call("system", "enterHostUSBSendMode", scanParameters({}));
  EXPECT_THAT(second.receiveAll(), ElementsAre("response 0", "response -1"));
  second.call("jobFactory", "create", create);
  EXPECT_EQ(second.receive(), "exception");
  second.call(job, "cancel");
  EXPECT_EQ(second.receive(), "exception") << "not its job";
  second.call("system", "exitHostUSBSendMode");
  EXPECT_THAT(second.receiveAll(), ElementsAre("response 0", "systemUpdate HostSend Exited"));
}

TEST(SimulatedObjects, HaveNoJobForWhatCannotBe) {
  const SimulatorProcess device(arguments());
  ObjectHost host(device);
  host.call("jobFactory", "create", createParameters(scanParameters({})));
  EXPECT_EQ(host.receive(), "exception") << "not in host mode";
  host.enterHostMode();
  const auto tree = [](const std::string& scan, const std::string& document = "",
                       const std::string& window =
                           mapElement({{"bottomRight", mapElement({})}, {"topLeft", mapElement({})}})) {
    const auto entries = [](const std::string& text) {
      return text.empty() ? ""
                          : "<child name=\"" + text.substr(0, text.find('=')) + "\">" +
                                integerElement(std::stoi(text.substr(text.find('=') + 1))) + "</child>";
    };
    return "<MapElem><child name=\"documentParameters\"><MapElem>" + entries(document) +
           "</MapElem></child><child name=\"scanParameters\"><MapElem>" + entries(scan) +
           "<child name=\"scanWindow\">" + window +
           "</child></MapElem></child><child name=\"usbParameters\"><MapElem/></child></MapElem>";
  };
  const auto window = [](const char* corner, const char* axis, int value) {
    const std::string other = std::string(corner) == "topLeft" ? "bottomRight" : "topLeft";
    return mapElement({{corner, mapElement({{axis, integerElement(value)}})}, {other, mapElement({})}});
  };
  const struct {
    const char* name;
    std::string tree;
    bool isPossible;
  } kCases[] = {
      {"all absent", tree(""), true},
      {"no effect", tree("darkness=9"), true},
      {"a part", tree("resolution=1200", "fileFormat=0", window("topLeft", "x", 10199)), true},
      {"a resolution that is none", tree("resolution=76"), false},
      {"a negative resolution", tree("resolution=-75"), false},
      {"a bit depth that is none", tree("bitdepth=16"), false},
      {"a source that is none", tree("source=2"), false},
      {"compression", tree("", "compression=1"), false},
      {"a file format", tree("", "fileFormat=3"), false},
      {"an unknown parameter", tree("colour=1"), false},
      {"an unknown document parameter", tree("", "pages=1"), false},
      {"an empty window", tree("", "", window("bottomRight", "y", 0)), false},
      {"a window beyond the glass", tree("", "", window("bottomRight", "x", 10201)), false},
      {"a window that begins before it", tree("", "", window("topLeft", "y", -1)), false},
      {"a window without a dot", tree("resolution=75", "", window("topLeft", "x", 10190)), false},
      {"a window without corners", tree("", "", mapElement({})), false},
      {"no window", tree("", "", integerElement(0)), false},
      {"no maps", mapElement({}), false},
      {"a list", "<ListElem/>", false},
      {"a text", "<StringElem>x</StringElem>", false},
  };
  for (const auto& c : kCases) {
    host.call("jobFactory", "create", createParameters(c.tree));
    EXPECT_THAT(host.receive(), testing::StartsWith(c.isPossible ? "response HostSendJob_" : "exception"))
        << c.name;
  }
  for (const std::string& params :
       {std::string(kNoParams), scanParameters({}), "<ListElem>" + scanParameters({}) + "</ListElem>"}) {
    host.call("jobFactory", "create", params);
    EXPECT_EQ(host.receive(), "exception") << params;
  }
}

TEST(SimulatedObjects, TellEachObserverByName) {
  const SimulatorProcess device(arguments());
  ObjectHost host(device);
  host.enterHostMode();
  const std::string job = host.createJob({});
  host.removeObserver(job, "stateChanged");
  EXPECT_EQ(host.receive(), "response 0");
  host.startJob(job);
  host.receiveUntil("pageScanned Flatbed");
  EXPECT_THAT(host.text(),
              testing::HasSubstr(" <arg name=\"observer\">7_Observer</arg>\n <arg name=\"objName\">" + job +
                                 "</arg>\n <arg name=\"event\">pageScanned</arg>\n"));
  EXPECT_THAT(host.receiveAll(), ElementsAre()) << "states are observed no more";
  for (const char* observer : {"1_Observer", "2_Observer", "2_Observer"}) {
    host.observe(job, "stateChanged", observer);
  }
  host.call(job + ".scanJob", "done");
  EXPECT_THAT(host.receiveAll(),
              ElementsAre("response 0", "stateChanged Complete", "stateChanged Complete", "<Job.End>"));
}

}  // namespace
}  // namespace qvn::test
