// Debian's scanimage with the backend: the way most programs of this system scan.
#include "scanimage/sane_programs.h"

namespace qvn::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class Scanimage : public SanePrograms, public testing::WithParamInterface<const char*> {
 protected:
  Scanimage() : SanePrograms(GetParam()) {}

  void SetUp() override {
    ASSERT_TRUE(std::filesystem::exists(kScanimage)) << "install sane-utils (scripts/setup.sh test)";
    configure("here", {{"dll.conf", "qvn\n"}});
  }

  Result scanimage(std::vector<std::string> arguments) const {
    return SanePrograms::scanimage("here", std::move(arguments));
  }
};

INSTANTIATE_TEST_SUITE_P(Families, Scanimage, testing::Values(kCpd, kBpd), familyName);

TEST_P(Scanimage, ListsTheScannerAndItsOptions) {
  start();
  const Result list = scanimage({"-L"});
  EXPECT_EQ(list.exitCode, 0) << list.errors;
  EXPECT_THAT(list.output,
              HasSubstr("device `qvn:" + DeviceLink::portname() + "' is a Noname Simulated Printer"));

  const Result options = scanimage({"-A"});
  EXPECT_EQ(options.exitCode, 0) << options.errors;
  EXPECT_THAT(
      options.output,
      AllOf(HasSubstr("--source Flatbed|ADF [Flatbed]"), HasSubstr("--mode Lineart|Gray|Color [Gray]"),
            HasSubstr("--resolution 75|100|150|200|300|600|1200dpi [300]"),
            HasSubstr("-x 0..215.9mm [215.9]"), HasSubstr("-y 0..297.18mm [297.18]")));

  // Its own test of a backend: every size of read.
  const Result test = scanimage({"-T", "--resolution", "75"});
  EXPECT_EQ(test.exitCode, 0) << test.errors;
  EXPECT_THAT(test.errors, AllOf(HasSubstr("PASS"), testing::Not(HasSubstr("FAIL"))));
}

TEST_P(Scanimage, ScansWhatLiesOnTheGlass) {
  start();
  const struct {
    std::vector<std::string> options;
    std::uint32_t width, height;
  } cases[] = {
      {{"--resolution", "100", "--mode", "Color"}, 850, 1170},
      {{"--resolution", "150", "--mode", "Gray", "-l", "10", "-t", "20", "-x", "100", "-y", "50"}, 590, 295},
      {{"--resolution", "300", "--mode", "Lineart", "-l", "1.3", "-x", "9.6", "-y", "11"}, 113, 130},
  };
  int page = 0;
  for (const auto& [options, width, height] : cases) {
    SCOPED_TRACE(testing::PrintToString(options));
    std::vector<std::string> arguments = {"-d", "qvn:" + DeviceLink::portname(), "--format=png", "-o",
                                          out("page.png")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Result scan = scanimage(arguments);
    EXPECT_EQ(scan.exitCode, 0) << scan.errors;
    const Picture picture = readPng(out("page.png"));
    EXPECT_EQ(picture.width, width);
    EXPECT_EQ(picture.height, height);
    EXPECT_SAME_PICTURE(picture, sent(++page));
  }
  EXPECT_SAME_PICTURE(sent(1), glass());
}

TEST_P(Scanimage, SaysWhatIsWrong) {
  start();
  // The program has no way to set how long a silent scanner is waited for.
  std::vector<std::pair<std::string, std::string>> cases = {
      {"busy", "sane_start: Device busy"}, {"close-mid-page=500000:1", "Error during device I/O"}};
  if (family() == kCpd) cases.emplace_back("wrong-length=3:1", "Error during device I/O");
  for (const auto& [fault, sentence] : cases) {
    SCOPED_TRACE(fault);
    device().command("fault " + fault);
    const Result failed = scanimage({"--resolution", "100", "--format=pnm"});
    EXPECT_NE(failed.exitCode, 0);
    EXPECT_THAT(failed.errors, HasSubstr(sentence));
    device().command("clear-faults");
  }
}

}  // namespace
}  // namespace qvn::test
