// Setting the library up on a machine and taking it off.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "common/logging/basic_logger.h"
#include "platform/files/paths.h"
#include "platform/registry/registry.h"
#include "platform/threads/mutex.h"
#include "qvn/qvn.h"
#include "qvn/transport/settings.h"
#include "support/fake_transport.h"
#include "support/manual_clock.h"
#include "support/process/forked.h"
#include "support/registry_values.h"

namespace qvn::test {
namespace {

namespace fs = std::filesystem;
namespace registry = platform::registry;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kBrand[] = "Software\\Quorin Tools";

std::string belowRoot(const std::string& key) { return kLibraryRegistryRoot + key; }

// Where this machine's own script lies.
fs::path scriptFile() {
  std::string directory;
  EXPECT_EQ(platform::systemDirectory(directory), 0u);
  return platform::nativePath(directory + "\\qr__.loc");
}

class Installation : public testing::Test {
 protected:
  Installation() {
    FakeTransport::registerModule();
    fake.takeCalls();
  }
  ~Installation() override { fs::remove_all(scriptFile()); }

  FakeTransport& fake = FakeTransport::instance();
};

TEST_F(Installation, ImportsTheScriptAndInstallsTheTransports) {
  EXPECT_EQ(QvnInstall(), 0u);
  EXPECT_THAT(storedText(belowRoot("Transports\\Network"), "IPv4"), "qvn_ipv4.so")
      << "the one that is installed";
  EXPECT_THAT(fake.takeCalls(), ElementsAre("initialize", "install", "uninitialize"));

  std::ofstream(scriptFile()) << "[Software\\Quorin Tools\\Own]\n\"a\"=\"b\"\n";
  EXPECT_EQ(QvnInstall(), 0u);
  EXPECT_EQ(storedText("Software\\Quorin Tools\\Own", "a"), "b") << "this machine's own comes first";
  EXPECT_THAT(fake.takeCalls(), Contains("install"));
}

TEST_F(Installation, IsInstalledWithinAnInitialisedLibraryToo) {
  ASSERT_EQ(QvnInitialize(), 0u);
  EXPECT_EQ(QvnInstall(), 0u);
  EXPECT_EQ(QvnSuspend(), 0u);
  EXPECT_EQ(QvnUninstall(), 0u);
  EXPECT_FALSE(keyExists(kLibraryRegistryRoot));
  EXPECT_EQ(QvnUninitialize(), 0u);
}

TEST_F(Installation, GoesOnWithoutAScript) {
  const std::function<void(const fs::path&)> cases[] = {
      [](const fs::path& file) { std::ofstream(file) << "[Software\\Half]\n\"a\"=dword:xyz\n"; },
      [](const fs::path& file) { fs::create_directory(file); },
      [](const fs::path& file) { fs::create_symlink("/no/such/file", file); },
  };
  for (const auto& make : cases) {
    fs::remove_all(scriptFile());
    make(scriptFile());
    EXPECT_EQ(QvnInstall(), 0u);
    EXPECT_FALSE(keyExists("Software\\Half"));
    EXPECT_FALSE(keyExists(belowRoot("Runtime"))) << "nor is the script that was installed taken instead";
    EXPECT_THAT(fake.takeCalls(), Contains("install"));
  }
}

TEST_F(Installation, WaitsFifteenSecondsForTheImport) {
  // Nobody writes into it: whoever opens it to read hangs.
  ASSERT_EQ(mkfifo(scriptFile().c_str(), 0600), 0);
  {
    ManualClock clock(ManualClock::Mode::AutoAdvance);
    EXPECT_EQ(QvnInstall(), 0u);
    EXPECT_EQ(clock.monotonicMilliseconds(), 15'000u);
  }
  EXPECT_THAT(fake.takeCalls(), Contains("install"));
  // A script that ends the import without a change. Opening waits for the reader.
  const int pipe = open(scriptFile().c_str(), O_WRONLY);
  ASSERT_GE(pipe, 0) << "it was ended, or never began";
  EXPECT_EQ(write(pipe, "wrong\n", 6), 6);
  close(pipe);
}

TEST_F(Installation, SeveralAtOnceComeToTheSame) {
  const auto install = [] { return static_cast<int>(QvnInstall()); };
  Forked first(install);
  Forked second(install);
  Forked third(install);
  EXPECT_EQ(first.wait() + second.wait() + third.wait(), 0);
  EXPECT_EQ(storedText(belowRoot("Transports\\Network"), "IPv4"), "qvn_ipv4.so");
  EXPECT_EQ(storedText(belowRoot("Runtime"), "DefaultModelName"), "Quorin_Printer");
}

TEST_F(Installation, UninstallingKeepsWhatOthersNeed) {
  const struct {
    bool otherModule;
    std::uint32_t deleteStore;
    bool networkSettingsStay;
    bool brandStays;
  } cases[] = {
      {true, 1, true, true},
      {true, 0, true, true},
      {false, 0, false, true},
      {false, 1, false, false},
  };
  const std::string qvn = std::string(kBrand) + "\\Qvn\\";
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "other " << c.otherModule << ", delete " << c.deleteStore);
    FakeTransport::registerModule();
    store(qvn + "Shared\\Ip1\\Settings", "x", 1);
    store(qvn + "Shared\\Settings", "HostInfo", "kept");
    store(belowRoot("PrinterStore"), "7", "a printer");
    store(belowRoot("Settings"), "DeleteStoreOnUninstall", c.deleteStore);
    registry::Key local;
    ASSERT_EQ(registry::createKey(registry::Hive::LocalMachine, qvn + "Local", {}, local), 0u);
    if (c.otherModule) {
      store(qvn + "Local\\qa__\\Settings", "a", "b");
    } else if (keyExists(qvn + "Local\\qa__")) {
      ASSERT_EQ(registry::deleteKey(local, "qa__\\Settings"), 0u);
      ASSERT_EQ(registry::deleteKey(local, "qa__"), 0u);
    }
    fake.takeCalls();
    EXPECT_EQ(QvnUninstall(), 0u);
    EXPECT_THAT(fake.calls(), ElementsAre("initialize", "uninstall", "uninitialize"));
    EXPECT_FALSE(keyExists(kLibraryRegistryRoot));
    EXPECT_EQ(keyExists(qvn + "Local\\qa__\\Settings"), c.otherModule);
    EXPECT_EQ(keyExists(qvn + "Shared\\Ip1\\Settings"), c.networkSettingsStay);
    EXPECT_EQ(storedText(qvn + "Shared\\Settings", "HostInfo"), c.brandStays ? "kept" : "");
    EXPECT_EQ(keyExists(kBrand), c.brandStays);
  }
  EXPECT_EQ(QvnUninstall(), 0u) << "nothing is there any more";
}

TEST_F(Installation, AKeyThatIsMissingDoesNotKeepTheOthers) {
  store(belowRoot("Settings"), "DeleteStoreOnUninstall", 1);  // and no Shared\Ip1
  EXPECT_EQ(QvnUninstall(), 0u);
  EXPECT_FALSE(keyExists(kBrand));
}

// With the log on from the beginning, and the lines in it.
class LoggedInstallation : public Installation {
 protected:
  LoggedInstallation() {
    store(belowRoot("Logger"), "startLog", 1);
    store(belowRoot("Logger"), "All", 9);
    store(belowRoot("Logger"), "Clocktime_In_Header", 0);
    EXPECT_EQ(QvnInitialize(), 0u);
    BasicLogger::getInstance().deleteLogFile();
  }
  ~LoggedInstallation() override { QvnUninitialize(); }

  std::vector<std::string> lines() {
    std::ifstream file(platform::nativePath("c:\\qr__.log"), std::ios::binary);
    std::vector<std::string> found;
    for (std::string line; std::getline(file, line);) {
      line.pop_back();
      found.push_back(line.substr(0, line.find(' ')) + ": " + line.substr(26));
    }
    BasicLogger::getInstance().deleteLogFile();
    return found;
  }

  void nameModel(const std::string& name) { store(belowRoot("Runtime"), "DefaultModelName", name); }
};

TEST_F(LoggedInstallation, UninstallingEndsTheLog) {
  EXPECT_EQ(QvnUninstall(), 0u);
  EXPECT_THAT(lines(), ElementsAre("Server: QvnUninstall()"));
  FakeTransport::registerModule();
  EXPECT_EQ(QvnAddTransport("/no/such/module"), 126u) << "which is logged at other times";
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(LoggedInstallation, SaysWhatFailed) {
  store(belowRoot("Transports\\Local"), "GONE", "/no/such/module.so");
  std::ofstream(scriptFile()) << "";
  EXPECT_EQ(QvnInstall(), 0u);
  const std::string operation = "Server: Transports::installRegisteredTransports()";
  EXPECT_THAT(lines(), AllOf(Contains(testing::StartsWith(operation + " exception=file:")),
                             Contains(operation + " reason=/no/such/module.so: No such file or directory")));
}

TEST_F(LoggedInstallation, TheMonitorIsNamedAfterTheDefaultModel) {
  ManualClock clock;  // stands still: nothing waits
  nameModel("Model_One_Two");
  EXPECT_EQ(QvnAddMonitor(), 0u);
  const std::string monitors = "System\\CurrentControlSet\\Control\\Print\\Monitors\\";
  EXPECT_EQ(storedText(monitors + "Model One Two Port", "Driver"), "qr__qzpm.dll");
  const auto success = ElementsAre("COMServer: Print Monitor installed successfully",
                                   "Server: System::qvnAddMonitor() PrintMonitor event wait succeeded");
  EXPECT_THAT(lines(), success);
  EXPECT_EQ(QvnAddMonitor(), 3006u);
  EXPECT_THAT(lines(), success) << "installed already is as good";
}

TEST_F(LoggedInstallation, AMonitorThatCannotBeAddedIsInTheLog) {
  EXPECT_EQ(QvnAddMonitor(), 2u) << "the default model has no name";
  EXPECT_THAT(lines(), IsEmpty());
  nameModel("Back\\slash");
  EXPECT_EQ(QvnAddMonitor(), 87u);
  EXPECT_THAT(lines(), ElementsAre("Server: error installing Print Monitor code=87"));
}

TEST_F(LoggedInstallation, TheMonitorIsAddedWithoutItsEvent) {
  platform::ErrorCode error = platform::kSuccess;
  const auto inTheWay = platform::NamedMutex::create("qr__printmonitor", false, {}, error);
  nameModel("Model");
  EXPECT_EQ(QvnAddMonitor(), 0u);
  EXPECT_THAT(lines(), ElementsAre(testing::StartsWith("PrintMonitor: System::qvnAddMonitor() exception="),
                                   "COMServer: Print Monitor installed successfully"));
}

}  // namespace
}  // namespace qvn::test
