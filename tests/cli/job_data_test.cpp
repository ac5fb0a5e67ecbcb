#include "shared/client/job_data.h"

#include <gtest/gtest.h>

#include "progress_bar.h"

namespace qvn::cli {
namespace {

const std::string kMarker(kEndOfJobMarker);

// Gives the data in reads of at most `piece` bytes.
ReadBytes source(std::string data, std::size_t piece) {
  return [data, piece, at = std::size_t{0}](char* buffer, std::size_t size) mutable {
    const std::size_t count = std::min({size, piece, data.size() - at});
    data.copy(buffer, count, at);
    at += count;
    return count;
  };
}

std::vector<std::string> blocksOf(const std::string& data, std::size_t piece, bool endWithMarker) {
  JobData job(source(data, piece), endWithMarker);
  std::vector<std::string> blocks;
  for (std::string block = job.next(); !block.empty(); block = job.next()) blocks.push_back(block);
  return blocks;
}

TEST(JobData, EndsEveryJobWithOneMarkerInOneBlockAndLeavesTheDataOfOtherPrintersAlone) {
  const struct {
    const char* name;
    std::string data;
    bool hasMarker;
  } cases[] = {
      {"empty", "", false},
      {"one byte", "x", false},
      {"shorter than the marker", kMarker.substr(0, 7), false},
      {"the marker alone", kMarker, true},
      {"ends with the marker", std::string(300000, 'x') + kMarker, true},
      {"has the marker in the middle", kMarker + std::string(300000, 'x'), false},
      {"ends with half a marker", std::string(262140, 'x') + kMarker.substr(0, 4), false},
      {"the marker straddles two reads", std::string(262140, 'x') + kMarker, true},
      {"a whole number of blocks", std::string(524288, 'x'), false},
  };
  for (const auto& [name, data, hasMarker] : cases) {
    for (const std::size_t piece : {std::size_t{1} << 20, std::size_t{65536}, std::size_t{5}}) {
      if (piece == 5 && data.size() > 100) continue;
      SCOPED_TRACE(std::string(name) + ", reads of " + std::to_string(piece));
      const auto blocks = blocksOf(data, piece, true);
      std::string all;
      for (const std::string& block : blocks) all += block;
      EXPECT_EQ(all == data + (hasMarker ? "" : kMarker), true);
      ASSERT_FALSE(blocks.empty());
      EXPECT_TRUE(blocks.back().ends_with(kMarker));
      all.clear();
      for (const std::string& block : blocksOf(data, piece, false)) all += block;
      EXPECT_EQ(all == data, true);
    }
  }
}

TEST(Progress, IsTrueAtEachMoment) {
  struct Case {
    const char* line;
    Progress progress;
    std::size_t columns = 100;
  };
  using enum ProgressUnit;
  const std::string longName(60, 'n');
  const Case cases[] = {
      // No rate in the first second.
      {"a.prn  [                        ]   0%  0 B of 2.0 MB",
       {"a.prn", Bytes, 2000000, 0, 900, 900, "stands"}},
      {"a.prn  [======                  ]  25%  500.0 kB of 2.0 MB  500.0 kB/s  00:03 left",
       {"a.prn", Bytes, 2000000, 500000, 1000, 0, "stands"}},
      {"a.prn  [======                  ]  25%  500.0 kB of 2.0 MB  stands (00:04)",
       {"a.prn", Bytes, 2000000, 500000, 5000, 4000, "stands"}},
      {"a.prn  [========================] 100%  2.0 MB of 2.0 MB  500.0 kB/s",
       {"a.prn", Bytes, 2000000, 2000000, 4000, 0, "stands"}},
      // A file that grows while it is printed, and a pipe.
      {"a.prn  [========================] 100%  3.0 MB of 2.0 MB  3.0 MB/s",
       {"a.prn", Bytes, 2000000, 3000000, 1000, 0, "stands"}},
      {"-  1.5 kB  1.5 kB/s", {"-", Bytes, std::nullopt, 1500, 1000, 0, "stands"}},
      {"page 1  [============            ]  50%  585 of 1170 lines  585 lines/s  00:01 left",
       {"page 1", Lines, 1170, 585, 1000, 0, "stands"}},
      // A narrow terminal takes from the name first, then from the rest.
      {"nnnnnnnnnnnnnnnnnn...  1.5 kB  1.5 kB/s",
       {longName, Bytes, std::nullopt, 1500, 1000, 0, "stands"},
       40},
      {"\u00E9\u00E9\u00E9\u00E9\u00E9...  1.5...",
       {"\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9", Bytes, std::nullopt, 1500, 1000, 0,
        "stands"},
       17},
      {"nnnnn...  1.5...", {longName, Bytes, std::nullopt, 1500, 1000, 0, "stands"}, 17},
  };
  for (const Case& one : cases) EXPECT_EQ(progressLine(one.progress, one.columns), one.line);
}

}  // namespace
}  // namespace qvn::cli
