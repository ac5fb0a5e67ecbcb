// Every exported function with arguments that are missing, with handles that name no device, and while the
// library is not initialised.
#include <gmock/gmock.h>

#include "qvn/transport/attributes.h"
#include "sweeps/call_table.h"
#include "sweeps/stage.h"

namespace qvn::test {
namespace {

constexpr std::uint32_t kUnknown = 77;

class Arguments : public LibraryTest {};

TEST_F(Arguments, HandlesThatNameNoDeviceAndMissingArguments) {
  std::uint32_t number = 0;
  for (const ExportedCall& call : exportedCalls()) {
    SCOPED_TRACE(call.name);
    for (std::size_t i = 0; i < call.missing.size(); ++i) EXPECT_EQ(call.missing[i](), 87u) << i;
    if (call.handles.front() == 0) continue;
    EXPECT_EQ(call.call(0), 6u);
    EXPECT_EQ(call.call(kUnknown), call.unknown);
  }
  for (const std::uint32_t handle : {0u, 1u}) {
    EXPECT_EQ(QvnGetCurrentStatePrinter(1, handle, nullptr), 87u);
    EXPECT_EQ(QvnGetCurrentStateScanner(1, handle, nullptr), 87u);
    EXPECT_EQ(QvnGetCurrentStateHid(1, handle, nullptr), 87u);
    EXPECT_EQ(QvnGetLongHid(1, handle, nullptr, &number), 87u);
    EXPECT_EQ(QvnGetLongHid(1, handle, attribute::kHandle, nullptr), 87u);
  }
  EXPECT_EQ(QvnRegisterForReportsHid(1, 1, nullptr), 1u) << "not 87";
  EXPECT_EQ(QvnGetClientId(nullptr), 87u);
  EXPECT_THAT(fake.calls(), testing::IsEmpty()) << "nothing is forwarded";
}

TEST(NotInitialised, EveryTracedFunctionGivesOneAndDoesNothing) {
  for (int round = 0; round < 2; ++round) {
    for (const ExportedCall& call : exportedCalls()) {
      if (call.company == Company::Global) continue;
      // Answered from the registry, and without a trace.
      const bool works = call.name == "GetLongHid";
      EXPECT_EQ(call.call(kUnknown), call.name == "GetClientId" ? 0u
                                     : works                    ? call.unknown
                                                                : 1u)
          << call.name;
      for (const auto& missing : call.missing) EXPECT_EQ(missing(), works ? 87u : 1u) << call.name;
    }
    EXPECT_EQ(QvnGetClientId(nullptr), 87u);
    EXPECT_EQ(QvnInitialize(), 0u);
    EXPECT_EQ(QvnSuspend(), 0u);
    EXPECT_EQ(QvnResume(), 0u);
    EXPECT_EQ(QvnSetClientInfo(1, "k", "v"), 0u);
    EXPECT_EQ(QvnUninitialize(), 0u);
  }
}

TEST(ExportedCalls, AreAllInTheTable) { EXPECT_EQ(exportedCalls().size(), 70u); }

}  // namespace
}  // namespace qvn::test
