// The search for a job's account number in its print data.
#include <gtest/gtest.h>

#include "printer/bpd/job/account_number_search.h"

namespace qvn::test {
namespace {

constexpr char kLine[] = "\n@PJL LJOBINFO ACCOUNTNUMBER = ";

TEST(AccountNumberTest, TakesTheQuotedValueOfTheFirstLineWithinTheLimit) {
  const std::string line = kLine;
  const struct {
    const char* what;
    std::string data;
    std::optional<std::string> expected;
    std::uint32_t limit = 500;
  } cases[] = {
      {"at the start", line + "\"12345\"\r\n", "12345"},
      {"after other PJL", "\x1B%-12345X@PJL SET A=B\r" + line + "\"x y\"", "x y"},
      {"empty", line + "\"\"", ""},
      {"cut at 21", line + "\"1234567890123456789012\"", "123456789012345678901"},
      {"21 without an end", line + "\"123456789012345678901", "123456789012345678901"},
      {"whatever stands for the opening quote", line + "'12\"", "12"},
      {"the first of two", line + "\"1\"" + line + "\"2\"", "1"},
      {"a line feed within the limit", std::string(500, ' ') + line + "\"12\"", "12"},
      {"a line feed past the limit", std::string(501, ' ') + line + "\"12\"", std::nullopt},
      {"no line feed before it", line.substr(1) + "\"12\"", std::nullopt},
      {"another line first", "\n@PJL LJOBINFO ACCOUNT" + line + "\"12\"", "12"},
      {"hidden behind a second line feed", "\n" + line + "\"12\"", std::nullopt},
      {"after two more line feeds", "\n\n" + line + "\"12\"", "12"},
      {"the value ends with the data", line + "\"12", "12"},
      {"the data ends before the value", line + "\"", ""},
      {"the data ends before the opening quote", line, ""},
      {"the data ends within the line", line.substr(0, line.size() - 1), std::nullopt},
      {"another letter case", "\n@pjl ljobinfo accountnumber = \"12\"", std::nullopt},
      {"no data", "", std::nullopt},
      {"a megabyte without a line feed", std::string(1 << 20, 'x'), std::nullopt},
      {"a megabyte of line feeds", std::string(1 << 20, '\n'), std::nullopt},
      {"a limit of 0 is the first byte", line + "\"1\"", "1", 0},
      {"and not the second", " " + line + "\"1\"", std::nullopt, 0},
  };
  for (const auto& c : cases) EXPECT_EQ(findAccountNumber(c.data, c.limit), c.expected) << c.what;
}

}  // namespace
}  // namespace qvn::test
