// Alerts and the status cache in words.
#include "shared/alerts/alert_words.h"

#include <gmock/gmock.h>

namespace qvn::alerts {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(AlertWords, NamesEveryKindOfAlert) {
  const struct {
    Bytes packet;
    AlertKind kind;
    std::string words;
  } cases[] = {
      {{0xA5, 0, 5, 0x20, 0xFF, 0x01, 0, 0}, AlertKind::PowerOnReset, "the printer was switched on or reset"},
      {{0xA5, 0, 9, 0x20, 0xF0, 0x73, 1, 1, 8, 1, 8, 0},
       AlertKind::CancelAcknowledged,
       "the printer has cancelled the job"},
      {{0xA5, 0, 21, 0x20, 0xF0, 0x73, 1, 1, 0x10, 1, 0x10, 0, 0, 0, 0, 0, 17, 1, 1, 0, 18, 2, 0x48, 0x01},
       AlertKind::Status,
       "busy: out of paper, cover open, condition 0x0001"},
      {{0xA5, 0, 21, 0x20, 0xF0, 0x73, 1, 1, 0x10, 1, 0x10, 0, 0, 0, 0, 0, 17, 1, 0, 0, 18, 2, 0, 0},
       AlertKind::Status,
       "idle: ready"},
      // Cut short, a status alert is one of its class only.
      {{0xA5, 0, 9, 0x20, 0xF0, 0x73, 1, 1, 0x10, 1, 0x10, 0}, AlertKind::Extended, "extended alert"},
      {{0xA5, 0, 7, 0x20, 0xF0, 0x73, 1, 0, 0, 1},
       AlertKind::ExtendedWithLanguage,
       "extended alert with language"},
      {{0xA5, 0, 8, 0x20, 0xF0, 0x73, 1, 0, 0, 0, 2},
       AlertKind::ExtendedWithLanguage,
       "extended alert with language, kind 0x02"},
      {{0xA5, 0, 5, 0x20, 0xF0, 0x03, 0x20, 0}, AlertKind::Extension, "extension alert 0x20"},
      {{0xA5, 0, 5, 0x20, 0xF0, 0xE1, 0, 0}, AlertKind::Panel, "the operator panel has changed"},
      {{0xA5, 0, 5, 0x20, 0xF0, 0x80, 0, 0}, AlertKind::Other, "alert 0x80"},
      {{0xA5, 0, 4, 0x20, 0xF0, 0x80, 0}, AlertKind::None, "no alert"},
      {{0xA5, 0, 5, 0x20, 0xE0, 0x80, 0, 0}, AlertKind::None, "no alert"},
      {{0xA4, 0, 5, 0x20, 0xF0, 0x80, 0, 0}, AlertKind::None, "no alert"},
      {{}, AlertKind::None, "no alert"},
  };
  for (const auto& [packet, kind, words] : cases) {
    const Alert alert = decodeAlert(packet);
    EXPECT_EQ(alert.kind, kind) << words;
    EXPECT_EQ(alert.words, words);
    EXPECT_EQ(alert.status.has_value(), kind == AlertKind::Status) << words;
  }
}

TEST(AlertWords, GivesEachConditionABitAndAReasonOfItsOwn) {
  std::uint16_t seen = 0;
  std::vector<std::string> reasons;
  for (const Condition& condition : conditions()) {
    EXPECT_EQ(conditionsIn(condition.bit), std::vector<const Condition*>{&condition});
    EXPECT_EQ(seen & condition.bit, 0) << condition.words;
    seen = static_cast<std::uint16_t>(seen | condition.bit);
    EXPECT_THAT(condition.reason, testing::MatchesRegex("[a-z-]+-(report|warning|error)"));
    EXPECT_THAT(reasons, testing::Not(testing::Contains(condition.reason)));
    reasons.emplace_back(condition.reason);
  }
}

TEST(AlertWords, FindsTheStatusAmongTheEntriesOfACache) {
  const Bytes head(7, 0xEE);
  const struct {
    const char* what;
    Bytes entries;
    bool found;
  } cases[] = {
      {"both", {0, 17, 1, 1, 0, 18, 2, 0x40, 0}, true},
      {"behind another entry", {0, 9, 3, 1, 2, 3, 0, 18, 2, 0x40, 0, 0, 17, 1, 1}, true},
      {"only one", {0, 17, 1, 1}, false},
      {"cut in the last", {0, 17, 1, 1, 0, 18, 2, 0x40}, false},
      {"a length that is not the entry's", {0, 17, 1, 1, 0, 18, 1, 0x40}, false},
      {"an entry longer than the rest", {0, 9, 255, 0, 17, 1, 1}, false},
      {"none", {}, false},
  };
  for (const auto& [what, entries, found] : cases) {
    Bytes cache = head;
    cache.insert(cache.end(), entries.begin(), entries.end());
    const auto status = decodeCache(cache);
    ASSERT_EQ(status.has_value(), found) << what;
    if (status) {
      EXPECT_EQ(statusWords(*status), "busy: out of paper") << what;
    }
  }
  EXPECT_FALSE(decodeCache({}).has_value());
  EXPECT_FALSE(decodeCache(Bytes{1, 2, 3}).has_value());
}

}  // namespace
}  // namespace qvn::alerts
