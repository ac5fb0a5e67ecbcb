// Which lines of the log are shown.
#include "log_lines.h"

#include <gmock/gmock.h>

#include <fstream>

#include "platform/files/paths.h"
#include "shared/client/failure.h"
#include "support/process/successful_run.h"

namespace qvn::test {
namespace {

using cli::logTimeOf;

TEST(LogLines, AreOfAnErrorByTheirResultOrTheirWords) {
  const struct {
    const char* text;
    bool isError;
  } rows[] = {
      {"+QvnOpenPrinter() failed rc=6", false},
      {"-QvnOpenPrinter() clientId=1 rc=0", false},
      {"-QvnOpenPrinter() clientId=1 rc=6", true},
      {"  -CpdPrinter::doOpen() handle=7 rc=170", true},
      {"-CpdPrinterFactory::doMakeDevice()", false},
      {"CpdHidState::doOpen(handle=807): rc=QRN_ERROR_INVALID_FUNCTION", true},
      {"connect 127.0.0.1:9100 rc=0", false},
      {"Lock the AIO device responded busy", true},
      {"SetLastDate command failed, rc=5", true},
      {"Transports::getDiscoverer() exception=126", true},
      {"Mwo::purge()", false},
  };
  for (const auto& row : rows) {
    for (const char* const header :
         {"Server                    ", "2026/11/26-10:00:00.000 Server                    ",
          "2026/11/26-10:00:00.000 pid=00ab tid=00cd Server                    "}) {
      EXPECT_EQ(cli::tellsError(std::string(header) + row.text), row.isError) << header << row.text;
    }
  }
}

TEST(LogLines, TimesAreReadAsPeopleSayThem) {
  const auto now = std::chrono::system_clock::now();
  EXPECT_EQ(logTimeOf("2026-11-26 10:00", now), "2026/11/26-10:00:00.000");
  EXPECT_EQ(logTimeOf("2026-11-26T10:00:59", now), "2026/11/26-10:00:59.000");
  EXPECT_EQ(logTimeOf("2026-11-26", now), "2026/11/26-00:00:00.000");
  EXPECT_EQ(logTimeOf("24h", now), logTimeOf("1d", now));
  EXPECT_EQ(logTimeOf("90s", now + std::chrono::minutes(2)), logTimeOf("1m", now + std::chrono::seconds(90)));
  EXPECT_EQ(logTimeOf("00:00", now).substr(0, 10), logTimeOf("0s", now).substr(0, 10));
  for (const char* const bad :
       {"", " ", "10", "10x", "9999999d", "25:00", "10:60", "2026-13-01", "2026-02-30", "2026-11-2610:00"}) {
    EXPECT_THROW(logTimeOf(bad, now), cli::UsageError) << bad;
  }
}

TEST(LogLines, AreShownWithTheRestOfTheirEntry) {
  std::ofstream(platform::nativePath("c:\\qr__.log"))
      << "2000/01/02-10:00:00.000 Server X failed\r\n"
         "2999/01/02-10:00:00.000 Server sent: <a>\r\n failed</a>\r\n"
         "2999/01/02-10:00:01.000 Server -QvnX() rc=6\r\nrest\r\n";
  EXPECT_EQ(ok({"log", "show", "--since", "10m", "--errors"}),
            "2999/01/02-10:00:01.000 Server -QvnX() rc=6\nrest\n");
  EXPECT_EQ(ok({"log", "show", "--errors", "--lines", "3"}),
            "2000/01/02-10:00:00.000 Server X failed\n2999/01/02-10:00:01.000 Server -QvnX() rc=6\nrest\n");
  const Result none = qvn({"log", "show", "--since", "2999-12-31"});
  EXPECT_EQ(none.exitCode, 0);
  EXPECT_THAT(none.errors, testing::HasSubstr("no such lines"));
  std::ofstream(platform::nativePath("c:\\qr__.log")) << "Server X failed\r\n";
  EXPECT_EQ(ok({"log", "show", "--errors"}), "Server X failed\n");
  EXPECT_THAT(qvn({"log", "show", "--since", "1h"}).errors, testing::HasSubstr("no times"));
}

}  // namespace
}  // namespace qvn::test
