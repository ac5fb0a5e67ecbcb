#include <gmock/gmock.h>

#include "device/hid.h"
#include "device/printer.h"
#include "device/scanner.h"

namespace qvn {
namespace {

TEST(DeviceKinds, AnswerOneToWhatAFamilyLeavesOut) {
  struct : Printer {
  } printer;
  struct : Scanner {
  } scanner;
  struct : Hid {
  } hid;
  Data data;
  std::uint32_t state = 9;
  const std::uint32_t answers[] = {printer.doStartJob({}),
                                   printer.doPrint(data),
                                   printer.doWrite(data),
                                   printer.doEndJob(),
                                   printer.doCancelPrint(),
                                   printer.doExchangeNpa(data, data),
                                   printer.doGetCache(data),
                                   printer.doRegisterForAlerts({}),
                                   printer.doUnregisterForAlerts(1),
                                   printer.doRegisterForNotifications({}),
                                   printer.doUnregisterForNotifications(1),
                                   printer.doGetCurrentState(state),
                                   scanner.doStartJob(1, nullptr),
                                   scanner.doEndJob(1),
                                   scanner.doCancelJob(1),
                                   scanner.doExchangeData(1, data),
                                   scanner.doExchangeData(1, data, data),
                                   scanner.doRegisterForAsyncData({}),
                                   scanner.doUnregisterForAsyncData(1),
                                   scanner.doGetCurrentState(state),
                                   hid.doRegisterForReports({}),
                                   hid.doUnregisterForReports(1),
                                   hid.doGetCurrentState(state),
                                   hid.doSetCurrentState(1)};
  EXPECT_THAT(answers, testing::Each(1u));
  EXPECT_EQ(state, 9u);
}

}  // namespace
}  // namespace qvn
