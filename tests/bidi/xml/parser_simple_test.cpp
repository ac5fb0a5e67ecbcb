#include "bidi/xml/parser_simple.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>

namespace qvn::test {
namespace {

using Values = std::map<std::string, std::string, std::less<>>;

TEST(ParserSimple, ReadsTheFirstTextUnderEachName) {
  const std::tuple<const char*, std::string, Values> cases[] = {
      {"nothing", "", {}},
      {"two values",
       "<Track>1</Track><Scan.Param.Source>ADF</Scan.Param.Source>",
       {{"Track", "1"}, {"Scan.Param.Source", "ADF"}}},
      {"the first of one name", "<a>1</a><a>2</a>", {{"a", "1"}}},
      {"no text, no entry", "<a></a><b/><c>3</c>", {{"c", "3"}}},
      {"text in front", "before<a>1</a>", {{"a", "1"}}},
      {"lines", "\r\n<a>1</a>\r\n<b>2</b>\r\n", {{"a", "1"}, {"b", "2"}}},
      {"text behind an empty tag", "<a/>behind", {{"a", "behind"}}},
      {"the first piece", "<a>one\ntwo</a><b>x&amp;y</b>", {{"a", "one"}, {"b", "x"}}},
      {"an entity first", "<a>&lt;x</a>", {{"a", "<"}}},
      {"the tag opened last counts", "<a><b>1</b>2</a>", {{"b", "1"}}},
      {"attributes", "<a x=\"1\">2</a>", {{"a", "2"}}},
      {"the root's own name", "<zzz_Dummy_zzz>1</zzz_Dummy_zzz><a>2</a>", {{"a", "2"}}},
  };
  for (const auto& [what, text, values] : cases) EXPECT_EQ(ParserSimple(text).values(), values) << what;
}

TEST(ParserSimple, IsEmptyWhenTheTextIsNotWellFormed) {
  using namespace std::string_literals;
  for (const std::string& text :
       {"<a>1</a><b>"s, "<a>1</b>"s, "<a>1</a>&"s, "<a>1</a></zzz_Dummy_zzz>"s, "<0>1</0>"s,
        "<?xml version=\"1.0\"?><a>1</a>"s, "<!DOCTYPE a><a>1</a>"s, "<a>\0</a>"s, "<a>\xFF</a>"s}) {
    EXPECT_EQ(ParserSimple(text).values(), Values()) << text;
  }
}

}  // namespace
}  // namespace qvn::test
