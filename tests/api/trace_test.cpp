// The lines that exported functions write, as an administrator reads them.
#include <gmock/gmock.h>

#include <fstream>

#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "device/store/printer_store.h"
#include "platform/files/paths.h"
#include "qvn/transport/settings.h"
#include "support/library_fixture.h"
#include "support/registry_values.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;

// In the registry before the library looks: it looks again only after ten seconds.
struct StartedLog {
  StartedLog() {
    for (const auto& [name, value] :
         {std::pair{"startLog", 1u}, {"All", 2u}, {"Clocktime_In_Header", 0u}, {"Bidi", 0u}}) {
      store(std::string(kLibraryRegistryRoot) + "Logger", name, value);
    }
  }
};

class TraceTest : public StartedLog, public LibraryTest {
 protected:
  TraceTest() {
    BasicLogger::getInstance().deleteLogFile();
    PrinterStore::getInstance().persist(FakeTransport::printerText(7));
  }

  // The lines so far, without the component's column.
  std::vector<std::string> lines() {
    std::ifstream file(platform::nativePath("c:\\qr__.log"), std::ios::binary);
    std::vector<std::string> found;
    for (std::string line; std::getline(file, line);) {
      EXPECT_TRUE(line.ends_with('\r'));
      EXPECT_EQ(line.substr(0, 26), "Server                    ");
      found.push_back(line.substr(26, line.size() - 27));
    }
    BasicLogger::getInstance().deleteLogFile();
    return found;
  }
};

TEST_F(TraceTest, DiscoveriesAndWhatTheyFailAt) {
  fake.onCall = [](const char*) -> std::uint32_t { throw CallbackRefusal("loading"); };
  QvnDiscovery(5, "FAKE", "");
  EXPECT_EQ(lines().back(), "-QvnDiscovery() clientId=5 rc=170 transport=FAKE");
  fake.onCall = nullptr;
  fake.onDiscover = [](const std::string&) {
    return std::vector<std::string>{"<Device>CpdPrinter</Device>"};
  };
  QvnDiscovery(5, "FAKE", "");
  EXPECT_THAT(lines(), testing::Contains("  Unable to store device: <Device>CpdPrinter</Device> rc=1168"));
  QvnEnumWindowsHids(5, "USB1", nullptr);
  EXPECT_THAT(lines(), ElementsAre("+QvnEnumWindowsHids(clientId=5, transport=USB1)",
                                   "-QvnEnumWindowsHids(clientId=5, transport=USB1) rc=87"));

  ApplicationSettings().setLong("Logger", "All", 10, 0);
  std::uint32_t handle = 0;
  QvnEnumSpecificHid(5, "H", &handle);
  EXPECT_THAT(
      lines(),
      ElementsAre("+QvnEnumSpecificHid() clientId=5",
                  " QvnEnumSpecificHid() clientId=5 QvnEnumSpecificHid() rc=1796, performing "
                  "local discovery",
                  " +QvnDiscovery() clientId=5", " -QvnDiscovery() clientId=5 rc=0 transport=LOCAL_TRANSPORT",
                  "-QvnEnumSpecificHid() clientId=5 rc=1796 name=H handle=0"));
}

TEST_F(TraceTest, DetailLinesComeWithTheirLevel) {
  ApplicationSettings().setLong("Logger", "All", 8, 0);
  ApplicationSettings().setString("PrinterStore", "8", "no handle", 0);
  PrinterStore::getInstance().persist(FakeTransport::printerText(9));
  QvnEnumPrinters(5, "FAKE", "", [](std::uint32_t, std::uint32_t) {});
  EXPECT_THAT(lines(), ElementsAre("System::QvnEnumPrinters() callback(5,7)",
                                   "TransportString is missing device key: no handle",
                                   "System::QvnEnumPrinters() callback(5,9)"));
  QvnGetClientId(nullptr);
  QvnInitialize();
  QvnUninitialize();
  EXPECT_THAT(lines(), ElementsAre("QvnGetClientId() bad parameter", "QvnInitialize() initializeCount=2",
                                   "QvnUninitialize() initializeCount=1"));
  QvnUninitialize();
  QvnInitialize();
  lines();
  QvnGetClientId(nullptr);
  EXPECT_THAT(lines(), ElementsAre()) << "after the last uninitialisation of the process";
}

}  // namespace
}  // namespace qvn::test
