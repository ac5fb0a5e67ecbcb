// The backend as the scheduler runs it, without a scheduler.
#include <cups/backend.h>
#include <gmock/gmock.h>
#include <signal.h>

#include "end_to_end/print/print_server.h"
#include "support/noise.h"
#include "support/process/eventually.h"

namespace qvn::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

using Environment = std::vector<std::pair<std::string, std::string>>;

const std::string kMarker("\x1B\x2A\x82\x00\x00\x00\x00\xAC", 8);

class Backend : public PrintServer {
 protected:
  static Environment device(const std::string& uri) { return {{"DEVICE_URI", uri}, {"PRINTER", "lab"}}; }
  static std::vector<std::string> job(const std::string& copies = "1", const std::string& path = "") {
    std::vector<std::string> command = {QVN_CUPS_BACKEND, "7", "anna", "title", copies, ""};
    if (!path.empty()) command.push_back(path);
    return command;
  }
  // The backend, with what it tells the scheduler as its output.
  std::unique_ptr<Child> startJob(const std::string& path) const {
    const std::string command = "exec " QVN_CUPS_BACKEND " 7 anna title 1 '' " + path + " 2>&1";
    return std::make_unique<Child>(std::vector<std::string>{"/bin/sh", "-c", command}, lab_);
  }
  static void waitFor(Child& backend, const std::string& told) {
    auto line = backend.readLine();
    while (line && *line != told) line = backend.readLine();
    ASSERT_TRUE(line) << told << " was not told";
  }
  const Environment lab_ = device("qvn://IP_SIM0000001");
  using PrintServer::device;
};

TEST_F(Backend, ListsWhatADiscoveryFindsAndWhatIsStored) {
  start();
  ok({"device", "add", "--family", "CpdPrinter", "--transport", "IPv4", "--handle", "7", "--portname",
      "front desk"});
  ok({"device", "add", "--family", "CpdPrinter", "--transport", "IPv4", "--handle", "8"});
  const Result listed = run({QVN_CUPS_BACKEND});
  EXPECT_EQ(listed.exitCode, CUPS_BACKEND_OK) << listed.errors;
  EXPECT_THAT(
      listed.output,
      AllOf(HasSubstr("network qvn://IP_SIM0000001 \"Simulated Printer\" \"qvn-sim (IP_SIM0000001)\" \"\" "
                      "\"127.0.0.1\"\n"),
            HasSubstr("network qvn://front%20desk \"Unknown\" \"front desk\" \"\" \"\"\n")));
  EXPECT_EQ(std::count(listed.output.begin(), listed.output.end(), '\n'), 2) << listed.output;
}

TEST_F(Backend, PrintsFilesCopiesAndStandardInput) {
  start();
  const std::string data = noise(700000);
  const struct {
    const char* what;
    std::vector<std::string> command;
    std::string input;
    std::string received;
  } cases[] = {
      {"a file", job("1", file("a.prn", data)), "", data},
      {"standard input", job("3"), data, data},
      {"copies", job("3", file("b.prn", "page\n")), "", "page\npage\npage\n"},
      {"copies of a file with the marker", job("2", file("c.prn", data + kMarker)), "", data + data},
      {"an empty file, twice", job("2", file("d.prn", "")), "", ""},
      {"nothing", job(), "", ""},
  };
  int number = 0;
  for (const auto& [what, command, input, received] : cases) {
    SCOPED_TRACE(what);
    const Result result = run(command, input, lab_);
    EXPECT_EQ(result.exitCode, CUPS_BACKEND_OK) << result.errors;
    EXPECT_EQ(device().nextJob().at("outcome"), "complete");
    EXPECT_TRUE(stored(++number) == received);
    EXPECT_THAT(result.errors, AllOf(HasSubstr("INFO: sending the job\n"), Not(HasSubstr("ERROR"))));
    const bool hasProgress = result.errors.find("ATTR: job-media-progress=100\n") != std::string::npos;
    EXPECT_EQ(hasProgress, command.size() == 7 && !received.empty());
  }
}

TEST_F(Backend, TellsTheSchedulerWhatToDoAboutAJobItCannotPrint) {
  start({"busy"});
  ok({"settings", "set", "AIOLockEnabled", "1"});
  const std::string path = file("a.prn", "x");
  Environment inClass = device("qvn://IP_SIM0000001");
  inClass.emplace_back("CLASS", "all");
  const struct {
    std::vector<std::string> command;
    Environment environment;
    int exitCode;
    std::string words;
  } cases[] = {
      {job("1", path), device("qvn://IP_SIM0000001?contimeout=0"), CUPS_BACKEND_RETRY,
       "(result 170, QRN_ERROR_BUSY)"},
      {job("1", path), inClass, CUPS_BACKEND_FAILED, "(result 170, QRN_ERROR_BUSY)"},
      {job("1", path), device("qvn://NOWHERE"), CUPS_BACKEND_STOP,
       "there is no printer with the port name 'NOWHERE': the specified port is unknown (result 1796, "},
      {job("1", path), device("socket://NOWHERE"), CUPS_BACKEND_STOP,
       "is no device URI of the form qvn://PORTNAME"},
      {job("1", path), {}, CUPS_BACKEND_STOP, "is no device URI"},
      {{QVN_CUPS_BACKEND, "7"}, lab_, CUPS_BACKEND_STOP, "usage: qvn JOB USER TITLE COPIES OPTIONS [FILE]"},
  };
  for (const auto& [command, environment, exitCode, words] : cases) {
    const Result result = run(command, "", environment);
    EXPECT_EQ(result.exitCode, exitCode) << result.errors;
    EXPECT_THAT(result.errors, AllOf(HasSubstr("ERROR: "), HasSubstr(words)));
  }
  ok({"settings", "set", "AIOLockEnabled", "0"});
  device().command("clear-faults");

  const Result unreadable = run(job("1", "/no/such/file"), "", lab_);
  EXPECT_EQ(unreadable.exitCode, CUPS_BACKEND_FAILED);
  EXPECT_THAT(unreadable.errors, HasSubstr("ERROR: cannot open '/no/such/file'"));
  EXPECT_EQ(device().nextJob().at("outcome"), "cancelled");

  device().command("fault reject=start-job:1");
  const Result rejected = run(job("1", path), "", lab_);
  EXPECT_EQ(rejected.exitCode, CUPS_BACKEND_FAILED);
  EXPECT_THAT(rejected.errors, HasSubstr("ERROR: the printer has rejected the job\n"));

  device().signal(SIGTERM);
  device().wait();
  const Result gone = run(job("1", path), "", device("qvn://IP_SIM0000001?contimeout=0"));
  EXPECT_EQ(gone.exitCode, CUPS_BACKEND_FAILED);
  EXPECT_THAT(gone.errors,
              AllOf(HasSubstr("STATE: +connecting-to-device\n"), HasSubstr("ERROR: cannot open printer"),
                    HasSubstr("STATE: -connecting-to-device\n")));
}

TEST_F(Backend, CancelsTheJobOnTheDeviceWhenToldToStop) {
  start();
  // Standard input that pauses and does not end, the data the pipe holds being part of the job already.
  auto piped = startJob("");
  piped->write(noise(1000000));
  waitFor(*piped, "INFO: sending the job");
  piped->signal(SIGTERM);
  EXPECT_EQ(piped->wait(), CUPS_BACKEND_OK);
  EXPECT_EQ(device().nextJob().at("outcome"), "cancelled");

  // A device that takes nothing more.
  device().command("fault slow-print=0");
  ok({"settings", "set", "PJLWriteTimeout", "500"});
  auto stalled = startJob(file("a.prn", noise(8000000)));
  waitFor(*stalled, "INFO: sending the job");
  stalled->signal(SIGTERM);
  EXPECT_EQ(stalled->wait(), CUPS_BACKEND_OK);
}

TEST_F(Backend, StopsWaitingForABusyPrinterWhenToldTo) {
  start({"busy"});
  ok({"settings", "set", "AIOLockEnabled", "1"});
  auto waiting = startJob(file("a.prn", "x"));
  waitFor(*waiting, "STATE: +connecting-to-device");
  waiting->signal(SIGTERM);
  EXPECT_EQ(waiting->wait(), CUPS_BACKEND_OK);
  EXPECT_THAT(waiting->output(), AllOf(HasSubstr("STATE: -connecting-to-device\n"), Not(HasSubstr("ERROR"))));
  ok({"settings", "set", "AIOLockEnabled", "0"});
}

TEST_F(Backend, TellsThePrinterWhoseJobItIsAndHowThePrinterIs) {
  start();
  ok({"log", "on"});
  device().command("status 0 18432");
  const Result result = run(job(), "x", lab_);
  EXPECT_EQ(result.exitCode, CUPS_BACKEND_OK);
  EXPECT_THAT(result.errors, AllOf(HasSubstr("INFO: idle: out of paper, cover open\n"),
                                   HasSubstr("STATE: +media-empty-error\nSTATE: +cover-open-error\n"),
                                   HasSubstr("STATE: -media-low-warning,toner-low-warning,"),
                                   HasSubstr("STATE: -cover-open-error\nSTATE: -media-empty-error\n")));
  EXPECT_THAT(ok({"log", "show"}), HasSubstr("printObject=lab spoolerJobId=7"));
}

TEST_F(Backend, PrintsAlthoughNobodyReadsWhatItTells) {
  start();
  const std::string data = noise(300000);
  const Result result =
      run({"/bin/sh", "-c", "exec " + std::string(QVN_CUPS_BACKEND) + " 7 anna title 1 '' 2>&-"}, data, lab_);
  EXPECT_EQ(result.exitCode, CUPS_BACKEND_OK);
  EXPECT_EQ(device().nextJob().at("outcome"), "complete");
  EXPECT_TRUE(stored(1) == data);
}

}  // namespace
}  // namespace qvn::test
