// The search for a job's account number in its print data.
#include <gmock/gmock.h>

#include "printer/bpd/job/account_number_search.h"

namespace qvn::test {
namespace {

using testing::Optional;

constexpr char kLine[] = "\n@PJL LJOBINFO ACCOUNTNUMBER = ";

std::optional<std::string> feed(AccountNumberSearch& search, const std::string& data) {
  return search.feed({reinterpret_cast<const std::uint8_t*>(data.data()), data.size()});
}

std::optional<std::string> find(const std::string& data, std::uint32_t limit = 500) {
  AccountNumberSearch search(limit);
  return feed(search, data);
}

TEST(AccountNumberTest, TakesTheQuotedValueOfTheFirstLineWithinTheLimit) {
  const std::string line = kLine;
  const struct {
    const char* what;
    std::string data;
    std::optional<std::string> expected;
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
      {"the value has no end yet", line + "\"12", std::nullopt},
      {"the line has no end yet", line.substr(0, 20), std::nullopt},
      {"another letter case", "\n@pjl ljobinfo accountnumber = \"12\"", std::nullopt},
      {"no data", "", std::nullopt},
      {"a megabyte without a line feed", std::string(1 << 20, 'x'), std::nullopt},
      {"a megabyte of line feeds", std::string(1 << 20, '\n'), std::nullopt},
  };
  for (const auto& c : cases) EXPECT_EQ(find(c.data), c.expected) << c.what;
  EXPECT_EQ(find(std::string(1, ' ') + line + "\"1\"", 0), std::nullopt) << "a limit of 0 is the first byte";
  EXPECT_THAT(find(line + "\"1\"", 0), Optional(std::string("1")));
}

TEST(AccountNumberTest, FindsTheSameHoweverTheDataIsSplit) {
  const std::string data =
      "\x1B%-12345X@PJL\n\n@PJL LJOBINFO ACCOUNT\n@PJL LJOBINFO ACCOUNTNUMBER = \"4711\" ";
  for (std::size_t first = 0; first <= data.size(); ++first) {
    AccountNumberSearch search(500);
    auto found = feed(search, data.substr(0, first));
    if (!found) found = feed(search, data.substr(first));
    EXPECT_THAT(found, Optional(std::string("4711"))) << first;
  }
  AccountNumberSearch search(500);
  std::optional<std::string> found;
  for (const char byte : data) {
    if (!search.isOver()) found = feed(search, std::string(1, byte));
  }
  EXPECT_THAT(found, Optional(std::string("4711")));
  EXPECT_TRUE(search.isOver());
}

}  // namespace
}  // namespace qvn::test
