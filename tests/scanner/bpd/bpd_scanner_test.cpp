// A Bpd scanner without a job: its states, the parameters of its clients, what it makes of what the device
// delivers, and whom it calls.
#include <gmock/gmock.h>

#include "api/exported_call.h"
#include "scanner/bpd/bpd_scanner_fixture.h"
#include "scanner/bpd/job/job_parameter_store.h"
#include "scanner/bpd/scan_block.h"

namespace qvn::test {
namespace {

TEST(ScanBlockTags, StandWithinTheFirst32Bytes) {
  using Kind = ScanBlock::Kind;
  const std::string filler(29, ' ');
  const struct {
    std::string block;
    Kind kind;
    std::string text;
  } rows[] = {
      {"<Scan.Data>bytes", Kind::ScanData, "bytes"},
      {"<Scan.Data>", Kind::ScanData, ""},
      {"<Job.Start>", Kind::JobStart, ""},
      {"<Job.End>", Kind::JobEnd, ""},
      {"<Page.Start>x", Kind::PageStart, "x"},
      {"<Page.End>", Kind::PageEnd, ""},
      {"<?xml?><a/>", Kind::Document, "<?xml?><a/>"},
      {std::string("\xAA\0\0\0\0\0\0\x0B", 8) + "<?xml?><a/>", Kind::Document, "<?xml?><a/>"},
      {"<job.start>", Kind::Event, "job.start"},
      {"<Scan.Data >x", Kind::Event, "Scan.Data "},
      {"  > <Lamp>", Kind::Event, "Lamp"},
      {"<>", Kind::Event, ""},
      {filler + "<a>x", Kind::Event, "a"},
      {filler + " <a>", Kind::None, ""},
      {filler + "<ab>", Kind::None, ""},
      {"Scan.Data>", Kind::None, ""},
      {"<Scan.Data", Kind::None, ""},
      {"", Kind::None, ""},
  };
  for (const auto& row : rows) {
    const ScanBlock block = readScanBlock(row.block);
    EXPECT_EQ(block.kind, row.kind) << row.block;
    EXPECT_EQ(block.text, row.text) << row.block;
  }
}

TEST_F(BpdScannerTest, KeepsTheParametersOfEachClient) {
  ASSERT_EQ(scanner->doOpen(), 0u);
  JobParameterStore& store = JobParameterStore::getInstance();
  const struct {
    const char* data;
    std::uint32_t rc;
  } rows[] = {
      {"<0>A</0><1>12x</1>", 0},
      {"<0>B.C</0><1></1>", 0},
      {"<0>A</0><1>13</1>", 0},
      {"<0>D</0><1> -7</1>", 0},
      {"<0>E</0><1>4294967296</1>", 0},
      {"<0>F</0><1>text &gt;</1>", 87},
      {"<0>G</0><1>\xFF</1>", 87},
      {"<0>1st</0><1>1</1>", 87},
      {"<0>has blank</0><1>1</1>", 87},
      {"<0>a><b</0><1>1</1>", 87},
      {"<0></0><1>1</1>", 87},
      {"<0>only</0>", 87},
      {"", 87},
  };
  for (const auto& row : rows) {
    Data data(std::string_view(row.data));
    EXPECT_EQ(scanner->doExchangeData(1, data), row.rc) << row.data;
  }
  EXPECT_EQ(store.getJobParameter(1, "A"), 13u);
  EXPECT_EQ(store.getJobParameter(1, "B.C"), 0u);
  EXPECT_EQ(store.getJobParameter(1, "D"), 0u) << "not unsigned";
  EXPECT_EQ(store.getJobParameter(1, "E"), 0xFFFFFFFFu);
  EXPECT_EQ(store.getJobParameter(2, "A"), 0u);
  store.clearJobParameters(1);
  EXPECT_EQ(store.getJobParameter(1, "A"), 0u);
}

TEST_F(BpdScannerTest, InsideACallbackTheEndOfAJobIsRefused) {
  openFor(1);
  ReceivedBpdData::onCall = [this](const std::string&) {
    EXPECT_EQ(guardedCall([this] { return scanner->doEndJob(1); }), 170u);
  };
  deliver("<Ring>");
  EXPECT_THAT(ReceivedBpdData::take(), testing::ElementsAre("1/0/2000: Ring"));
}

}  // namespace
}  // namespace qvn::test
