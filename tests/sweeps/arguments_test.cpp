// Every exported function with arguments that are missing, with handles that name no device, while the
// library is not initialised, and in a child made by fork.
#include <gmock/gmock.h>

#include <thread>

#include "qvn/transport/attributes.h"
#include "support/kept_log/kept_log.h"
#include "support/manual_clock.h"
#include "support/process/forked.h"
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

class KeptCalls : public KeptLog, public LibraryTest {};

TEST_F(KeptCalls, WriteTheirNamesArgumentsAndResults) {
  for (const ExportedCall& call : exportedCalls()) {
    // What the machine's own scheduler has is no part of it.
    if (call.company == Company::Global || call.name.starts_with("EnumWindows")) continue;
    gave(call.name, call.call(call.handles.front() == 0 ? 0 : kUnknown));
    for (const auto& missing : call.missing) gave(call.name, missing());
  }
  expectKept("sweeps", "exported_calls");
}

class KeptUses : private SkippingClock, public KeptCalls {};

TEST_F(KeptUses, FromBeforeTheOpenToBehindTheClose) {
  Stage stage;
  stage.onHeard = [this](const std::string& what, std::uint32_t) { heard(what); };
  Stage::set("CpdPrinterMwo", 0);
  for (const auto& [device, words] :
       {std::pair(kPrinter,
                  "StartJob Open Open StartJob StartJob Write Delete EndJob Close GetCurrentState StartJob "
                  "Close StartJob Close Delete Open"),
        {kScanner,
         "StartJob Open Open ExchangeData RegisterForAsyncData StartJob GetCurrentState data CancelJob "
         "status EndJob Delete UnregisterForAsyncData Close Close Close Delete Open"},
        {kHid,
         "RegisterForReports RegisterForNotifications Open RegisterForReports report event GetCurrentState "
         "UnregisterForReports UnregisterForNotifications report event Delete Close UnregisterForReports "
         "Delete Open"}}) {
    scene(kindOf(device).name);
    Stage::store({device});
    besideOthers([&, device = device, use = words] {
      stage.play(device, use);
      while (device == kPrinter && times("Mwo::stop() handle=7") == 0) std::this_thread::yield();
    });
  }
  expectKept("sweeps", "uses");
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

TEST_F(Arguments, AChildOfAProcessThatHasTheLibraryAtWorkGetsOneAndCanEnd) {
  Stage stage;
  Stage::store({kPrinter, kScanner, kHid});
  for (const std::uint32_t handle : {kPrinter, kScanner, kHid}) {
    EXPECT_EQ(stage.play(handle, "Open"), 0u);
    Stage::listen(1, handle);
  }
  // In the middle of a call.
  stage.onHeard = [](const std::string&, std::uint32_t) {
    inOwnProcess([] {
      for (const ExportedCall& call : exportedCalls()) {
        EXPECT_EQ(call.call(call.handles.front()), call.name == "GetClientId" ? 0u : 1u) << call.name;
      }
    });
  };
  EXPECT_EQ(QvnEnumPrinters(1, FakeTransport::kName, nullptr, heard::device), 0u);
  EXPECT_GT(stage.count("found"), 0);
  stage.onHeard = nullptr;
  for (const std::uint32_t handle : {kPrinter, kScanner, kHid}) {
    Stage::listenNoMore(1, handle);
    EXPECT_EQ(stage.play(handle, "Close"), 0u);
  }
}

TEST(NotInitialised, AChildInitialisesTheLibraryForItself) {
  for (int round = 0; round < 2; ++round) {
    inOwnProcess([] {
      EXPECT_EQ(QvnInitialize(), 0u);
      FakeTransport::registerModule();
      EXPECT_EQ(QvnDiscovery(1, FakeTransport::kName, ""), 0u);
      EXPECT_EQ(QvnUninitialize(), 0u);
    });
    EXPECT_EQ(QvnInitialize(), 0u);
    EXPECT_EQ(QvnUninitialize(), 0u);
  }
}

TEST(ExportedCalls, AreAllInTheTable) { EXPECT_EQ(exportedCalls().size(), 70u); }

}  // namespace
}  // namespace qvn::test
