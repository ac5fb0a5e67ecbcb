#include "printer/printer_object.h"

#include <gmock/gmock.h>

#include "support/library_fixture.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;

// Writes down what it is asked.
class Scripted : public Printer {
 public:
  explicit Scripted(std::vector<std::string>& callsMade) : calls(callsMade) {}
  ~Scripted() override = default;
  std::uint32_t doOpen() override { return note("open"); }
  std::uint32_t doClose() override { return note("close"); }
  std::uint32_t doStartJob(const JobRequest&) override { return note("start"); }
  std::uint32_t doPrint(Data&) override { return note("print"); }
  std::uint32_t doEndJob() override { return note("end"); }
  std::uint32_t doCancelPrint() override { return note("cancel"); }

  std::uint32_t note(const char* call) {
    calls.emplace_back(call);
    return rc;
  }
  std::vector<std::string>& calls;
  std::uint32_t rc = 0;
};

class PrinterObjectTest : public testing::Test {
 protected:
  std::uint32_t close(std::uint32_t client) {
    bool wasOpen = false;
    const std::uint32_t rc = object.close(client, wasOpen);
    EXPECT_EQ(wasOpen, rc != 1);
    return rc;
  }
  std::vector<std::string> calls;
  Scripted* device = new Scripted(calls);
  PrinterObject object{std::unique_ptr<Printer>(device), "<Handle>7</Handle>"};
  Data data{"x", 1};
};

TEST_F(PrinterObjectTest, OneClientOwnsTheJob) {
  EXPECT_EQ(object.print(1, data), 5u);
  EXPECT_EQ(object.print(0, data), 5u) << "nobody's job is not that of client 0";
  EXPECT_EQ(object.startJob(0, {}), 5u);
  device->rc = 170;
  EXPECT_EQ(object.startJob(2, {}), 170u);
  device->rc = 0;
  EXPECT_EQ(object.startJob(1, {}), 0u) << "a job that did not start has no owner";
  EXPECT_EQ(object.startJob(2, {}), 5u);
  EXPECT_EQ(object.startJob(1, {}), 5u);
  EXPECT_EQ(object.print(2, data), 5u);
  EXPECT_EQ(object.endJob(2), 5u);
  EXPECT_EQ(object.print(1, data), 0u);
  device->rc = 1460;
  EXPECT_EQ(object.endJob(1), 1460u);
  device->rc = 0;
  EXPECT_EQ(object.startJob(2, {}), 0u) << "the job has no owner, whatever its end answered";
}

TEST_F(PrinterObjectTest, TheOwnersLastCloseEndsItsJob) {
  object.open(1);
  object.open(1);
  object.open(2);
  object.startJob(1, {});
  calls.clear();
  EXPECT_EQ(close(1), 0u);
  EXPECT_EQ(close(2), 0u);
  EXPECT_THAT(calls, ElementsAre("close", "close"));
  calls.clear();
  EXPECT_EQ(close(1), 0u);
  EXPECT_THAT(calls, ElementsAre("cancel", "end", "close"));
  EXPECT_EQ(close(1), 1u) << "not open";
  EXPECT_EQ(object.startJob(2, {}), 0u);
  device->rc = 1225;
  EXPECT_EQ(object.open(1), 1225u);
  device->rc = 0;
  EXPECT_EQ(close(1), 1u) << "an open that failed does not count";
}

TEST(PrinterObject, AnswersWithoutADevice) {
  PrinterObject empty(nullptr, "");
  Data data;
  bool wasOpen = true;
  EXPECT_EQ(empty.close(1, wasOpen), 1359u);
  EXPECT_EQ(empty.endJob(1), 1359u);
  EXPECT_EQ(empty.exchangeNpa(1, data, data), 1359u);
  EXPECT_EQ(empty.registerForNotifications({}), 1359u);
  EXPECT_EQ(empty.unregisterForNotifications(1), 1359u);
  EXPECT_EQ(empty.open(1), 6u);
}

}  // namespace
}  // namespace qvn::test
