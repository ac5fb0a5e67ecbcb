// The programs that the documentation shows, as they stand there: each prints on a device, which gets what
// was sent and nothing else.
#include <gmock/gmock.h>

#include "end_to_end/print/print_server.h"
#include "support/noise.h"

namespace qvn::test {
namespace {

const std::string kMarker("\x1B\x2A\x82\x00\x00\x00\x00\xAC", 8);

class Example : public PrintServer, public testing::WithParamInterface<const char*> {
 protected:
  // Runs the program of that name in the test's language and expects that the device has the job.
  void expectPrinted(const std::string& program, const std::vector<std::string>& arguments,
                     const std::string& data) {
    SCOPED_TRACE(program + " " + testing::PrintToString(arguments));
    const Result result = runExample(program, arguments);
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    const nlohmann::json record = device().nextJob();
    EXPECT_EQ(record.at("outcome"), "complete");
    EXPECT_TRUE(stored(++job_) == data) << record;
  }
  static Result runExample(const std::string& program, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), std::string(QVN_EXAMPLES) + "/example_" + program + GetParam());
    return run(arguments);
  }

 private:
  int job_ = 0;
};

TEST_P(Example, PrintsOnACpdPrinter) {
  start();
  expectPrinted("header", {"IP_SIM0000001"}, "Hello\r\n\f");
  const std::string noisy = noise(300001);
  expectPrinted("readme", {"IP_SIM0000001", file("noise", noisy)}, noisy);
  expectPrinted("readme", {"IP_SIM0000001", file("marked", noisy + kMarker)}, noisy);
  expectPrinted("readme", {"IP_SIM0000001", file("short", "a")}, "a");
}

TEST_P(Example, PrintsOnABpdPrinterWithoutTheMarker) {
  start({}, "BpdPrinter");
  for (const std::string& data : {noise(65536), std::string("a")})
    expectPrinted("readme", {"IP_SIM0000001", file("data", data)}, data);
}

TEST_P(Example, TellsWhyItDoesNotPrint) {
  start();
  EXPECT_EQ(runExample("header", {}).exitCode, 2);
  EXPECT_EQ(runExample("readme", {"IP_SIM0000001"}).exitCode, 2);
  const Result unknown = runExample("readme", {"nowhere", file("data", "a")});
  EXPECT_EQ(unknown.exitCode, 1);
  EXPECT_EQ(unknown.errors, "print: error 1796\n");
}

INSTANTIATE_TEST_SUITE_P(, Example, testing::Values("_c", "_cpp"),
                         [](const auto& language) { return language.param + 1; });

}  // namespace
}  // namespace qvn::test
