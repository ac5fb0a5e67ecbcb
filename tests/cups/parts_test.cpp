// The parts of the backend that need no printer.
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>

#include "device_uri.h"
#include "job.h"
#include "patience.h"
#include "report.h"
#include "shared/client/failure.h"
#include "support/manual_clock.h"

namespace qvn::cups {
namespace {

TEST(DeviceUri, NamesEveryPortName) {
  for (const char* name : {"LAB1", "IP_SIM0000001", "USB001", "front desk", "LPT1:", "a:b:c", "[x]", "50%",
                           "a/b?c#d@e", "\\\\host\\share", "M\xC3\xBCller", "\"'"}) {
    const std::string uri = formatDeviceUri(name);
    EXPECT_EQ(uri.find_first_of(" \"\\"), std::string::npos) << uri;
    EXPECT_EQ(parseDeviceUri(uri).portName, name) << uri;
  }
}

TEST(DeviceUri, CarriesTheTimeToTry) {
  const struct {
    const char* uri;
    std::uint32_t milliseconds;
  } cases[] = {{"qvn://LAB1", 300000},
               {"qvn://LAB1/", 300000},
               {"qvn://LAB1?contimeout=0", 0},
               {"qvn://LAB1/?contimeout=86400", 86400000}};
  for (const auto& [uri, milliseconds] : cases) EXPECT_EQ(parseDeviceUri(uri).patience, milliseconds) << uri;
}

TEST(DeviceUri, RefusesWhatNamesNoPort) {
  for (const char* uri :
       {"", "qvn", "qvn:", "qvn:/LAB1", "qvn://", "qvn:///LAB1", "socket://LAB1", "LAB1", "qvn://me@LAB1",
        "qvn://LAB1/queue", "qvn://LAB1?wait=1", "qvn://LAB1?contimeout=", "qvn://LAB1?contimeout=1x",
        "qvn://LAB1?contimeout=-1", "qvn://LAB1?contimeout=99999999", "qvn://LAB%"}) {
    EXPECT_THROW(parseDeviceUri(uri), cli::UsageError) << uri;
  }
  EXPECT_THROW(parseDeviceUri("qvn://" + std::string(5000, 'x')), cli::UsageError);
}

Job jobOf(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "lab");
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  return readJob(static_cast<int>(argv.size()), argv.data());
}

TEST(Job, IsReadFromArgumentsAndEnvironment) {
  setenv("DEVICE_URI", "qvn://LAB1", 1);
  setenv("PRINTER", "lab", 1);
  const Job file = jobOf({"42", "anna", "A title", "3", "a=1 job-originating-host-name='far away' b", "/f"});
  EXPECT_EQ(
      std::tie(file.id, file.user, file.title, file.copies, file.queue, file.host, file.device.portName),
      std::make_tuple(42u, "anna", "A title", 3u, "lab", "far away", "LAB1"));
  EXPECT_EQ(file.file, "/f");
  EXPECT_FALSE(file.inClass);

  setenv("CLASS", "all", 1);
  unsetenv("PRINTER");
  const Job input = jobOf({"43", "", "", "3", ""});
  EXPECT_EQ(input.copies, 1u) << "the copies of standard input are the filters' affair";
  EXPECT_EQ(input.file, std::nullopt);
  EXPECT_EQ(input.queue, "LAB1");
  EXPECT_FALSE(input.host.empty());
  EXPECT_TRUE(input.inClass);
  unsetenv("CLASS");

  for (const std::vector<std::string>& wrong :
       std::vector<std::vector<std::string>>{{"x", "u", "t", "1", ""},
                                             {"1", "u", "t", "0", "", "/f"},
                                             {"1", "u", "t", "-1", "", "/f"},
                                             {"1"}}) {
    EXPECT_THROW(jobOf(wrong), cli::UsageError) << testing::PrintToString(wrong);
  }
  unsetenv("DEVICE_URI");
  EXPECT_THROW(jobOf({"1", "u", "t", "1", ""}), cli::UsageError);
}

TEST(Patience, WaitsLongerEachTimeUntilTheLimitOrAStop) {
  test::ManualClock clock;
  std::vector<platform::Milliseconds> waits;
  Patience patience(60000, [&](platform::Milliseconds duration) {
    waits.push_back(duration);
    clock.advance(duration);
    return true;
  });
  while (patience.again()) {
  }
  EXPECT_THAT(waits, testing::ElementsAre(500, 1000, 2000, 4000, 8000, 15000, 15000, 14500));
  Patience stopped(60000, [](platform::Milliseconds) { return false; });
  EXPECT_FALSE(stopped.again());
  Patience none(0, [](platform::Milliseconds) { return true; });
  EXPECT_FALSE(none.again());
}

TEST(Report, TellsNewsInWholeLinesAndTakesReasonsBack) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  {
    Report report(ends[1]);
    report.info("two\nlines");
    report.progress(5);
    report.progress(5);
    report.setReason("media-empty-error", false);
    report.setReason("media-empty-error", true);
    report.setReason("media-empty-error", true);
    report.forgetReasons({"media-empty-error", "cover-open-error", "media-jam-error"});
    report.forgetReasons({"media-empty-error"});
    report.error("end");
  }
  close(ends[1]);
  char buffer[4096];
  const ssize_t count = read(ends[0], buffer, sizeof buffer);
  close(ends[0]);
  EXPECT_EQ(std::string(buffer, static_cast<std::size_t>(count)),
            "INFO: two lines\n"
            "ATTR: job-media-progress=5\n"
            "STATE: +media-empty-error\n"
            "STATE: -cover-open-error,media-jam-error\n"
            "ERROR: end\n"
            "STATE: -media-empty-error\n");
}

}  // namespace
}  // namespace qvn::cups
