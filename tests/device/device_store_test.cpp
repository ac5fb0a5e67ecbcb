// Devices: their attributes, their stores, the factories and the tables of live objects.
#include <gmock/gmock.h>

#include <barrier>
#include <thread>

#include "device/factories/device_factories.h"
#include "device/store/printer_store.h"
#include "device/store/printer_table.h"
#include "device/store/scanner_store.h"
#include "printer/cpd/cpd_printer_factory.h"
#include "printer/printer_object.h"
#include "qvn/transport/attributes.h"
#include "support/kept_log/kept_log.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

class DeviceStoreTest : public LibraryTest {
 protected:
  PrinterStore& store = PrinterStore::getInstance();
  PrinterTable& table = PrinterTable::getInstance();

  std::string stored(std::uint32_t handle) {
    std::string text;
    EXPECT_EQ(store.read(handle, text), 0u);
    return text;
  }
};

TEST_F(DeviceStoreTest, ATextIsStoredUnderItsHandleInDecimal) {
  EXPECT_EQ(store.remove(12), 2u) << "nothing has been stored";
  const std::string text = FakeTransport::printerText(12);
  EXPECT_EQ(store.persist(text), 0u);
  std::string value;
  EXPECT_TRUE(ApplicationSettings().getString("PrinterStore", "12", value, 0));
  EXPECT_EQ(value, text);
  EXPECT_EQ(store.persist("<Device>CpdPrinter</Device>"), 1168u);
  EXPECT_EQ(store.read(13, value), 1168u);
  EXPECT_EQ(ScannerStore::getInstance().read(12, value), 1168u) << "kinds are apart";
  EXPECT_EQ(store.remove(12), 0u);
  EXPECT_EQ(store.read(12, value), 1168u);
}

TEST_F(DeviceStoreTest, ARediscoveredPrinterKeepsItsPortNameAndAPositiveTrueEndOfJob) {
  const struct {
    const char* stored;
    const char* reported;
    const char* merged;
  } cases[] = {
      {nullptr, "<Portname>new</Portname>", "<Portname>new</Portname>"},
      {"<Portname>old</Portname>", "<Portname>new</Portname>", "<Portname>old</Portname>"},
      {"<Portname></Portname>", "<Portname>new</Portname>", "<Portname>new</Portname>"},
      {"<TrueEndOfJob>1</TrueEndOfJob>", "<TrueEndOfJob>0</TrueEndOfJob>", "<TrueEndOfJob>1</TrueEndOfJob>"},
      {"<TrueEndOfJob>0</TrueEndOfJob>", "<TrueEndOfJob>1</TrueEndOfJob>", "<TrueEndOfJob>1</TrueEndOfJob>"},
  };
  const std::string handle = "<Handle>1</Handle>";
  for (const auto& c : cases) {
    store.remove(1);
    if (c.stored != nullptr) store.persist(handle + c.stored);
    EXPECT_EQ(store.update(handle + c.reported), 0u);
    EXPECT_EQ(stored(1), handle + c.merged);
  }
  EXPECT_EQ(store.update("<Portname>x</Portname>"), 1168u);
}

TEST_F(DeviceStoreTest, ARediscoveryDoesNotUndoAChangeMadeMeanwhile) {
  store.persist(FakeTransport::printerText(1, "P"));
  std::atomic<bool> done{false};
  std::atomic<int> updates{0};
  std::thread discoverer([&] {
    for (; !done; ++updates) store.update(FakeTransport::printerText(1, "reported"));
  });
  for (int i = 0; i < 50 && !HasFailure(); ++i) {
    const std::string changed = FakeTransport::printerText(1, "P" + std::to_string(i));
    store.persist(changed);
    // The one that ran meanwhile is over with the second that ends.
    for (const int before = updates; updates < before + 2;) std::this_thread::yield();
    EXPECT_EQ(stored(1), changed);
  }
  done = true;
  discoverer.join();
}

TEST_F(DeviceStoreTest, ThePortNameSearchIgnoresCaseAndStopsAtAnUnreadableText) {
  std::string text;
  EXPECT_EQ(store.findByPortname("USB001", text), 1796u);
  store.persist(FakeTransport::printerText(1, "LPT1"));
  store.persist(FakeTransport::printerText(2, "usb001"));
  EXPECT_EQ(store.findByPortname("USB001", text), 0u);
  EXPECT_EQ(text, FakeTransport::printerText(2, "usb001"));
  ApplicationSettings().setLong("PrinterStore", "3", 5, 0);
  EXPECT_EQ(store.findByPortname("LPT1", text), 0u) << "found before the unreadable one";
  EXPECT_EQ(store.findByPortname("COM1", text), 1359u);
  std::vector<std::string> texts;
  EXPECT_EQ(store.enumerate(texts), 0u);
  EXPECT_EQ(texts.size(), 2u) << "unreadable texts are skipped";
}

TEST_F(DeviceStoreTest, LiveObjectsAreSharedAndCounted) {
  store.persist(FakeTransport::printerText(7));
  EXPECT_EQ(table.find(7), nullptr);
  const PrinterObject* const first = table.acquire(7).get();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(table.acquire(7).get(), first);
  table.release(7);
  EXPECT_EQ(table.find(7).get(), first);
  table.release(7);
  EXPECT_EQ(table.find(7), nullptr);
  table.release(7);
  EXPECT_EQ(table.acquire(8), nullptr) << "not stored";
  store.remove(7);
  EXPECT_EQ(table.acquire(7), nullptr) << "a removed handle cannot be restored";
}

TEST_F(DeviceStoreTest, ThreadsThatRestoreTheSamePrinterShareOneObject) {
  store.persist(FakeTransport::printerText(7));
  std::vector<const PrinterObject*> seen(8);
  std::atomic<int> families{0};
  std::barrier round(std::ssize(seen));
  std::vector<std::thread> threads;
  for (auto& slot : seen) {
    threads.emplace_back([&] {
      slot = table.acquire(7).get();
      // Meanwhile factories are registered and found.
      auto& factories = DeviceFactories::getInstance();
      for (int i = 0; i < 500; ++i) {
        round.arrive_and_wait();
        const std::string family = "Family" + std::to_string(++families);
        factories.registerFactory(family, CpdPrinterFactory::getInstance());
        EXPECT_NE(factories.makePrinter("<Device>" + family + "</Device>"), nullptr);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_NE(seen.front(), nullptr);
  EXPECT_THAT(seen, testing::Each(seen.front()));
  for (std::size_t i = 0; i < seen.size(); ++i) table.release(7);
  EXPECT_EQ(table.find(7), nullptr);
}

class KeptDeviceTest : public KeptLog, public DeviceStoreTest {};

TEST_F(KeptDeviceTest, StoresFactoriesAndAttributes) {
  scene("stores");
  gave("persist", store.persist(FakeTransport::printerText(7)));
  gave("update", store.update(FakeTransport::printerText(7, "reported")));
  gave("restore", store.restore(7));
  gave("restore", store.restore(8));
  store.persist("<Device>Teapot</Device><Handle>4</Handle>");
  gave("restore", store.restore(4));
  heard("stored " + stored(4));
  gave("remove", store.remove(4));

  scene("factories");
  DeviceFactories& factories = DeviceFactories::getInstance();
  for (const char* const family :
       {"CpdPrinter", "BpdPrinter", "CpdScanner", "BpdScanner", "CpdHid", "Teapot"}) {
    const std::string text = FakeTransport::deviceText(family, 7);
    gave(family, factories.makeDevice(text) != nullptr ? 0 : 1);
    const bool isMade = factories.makePrinter(text) != nullptr || factories.makeScanner(text) != nullptr ||
                        factories.makeHid(text) != nullptr;
    gave(family, isMade ? 0 : 1);
  }
  gave("a printer as a scanner", factories.makeScanner(FakeTransport::printerText(1)) != nullptr ? 0 : 1);

  scene("attributes of a printer");
  const auto printer = factories.makeDevice(FakeTransport::printerText(7, "OLD"));
  const std::uint8_t revisions[] = {1, 2, 3};
  for (const std::uint32_t agreed : {31u, 0u}) {
    fake.onVisitor = [=](const std::string&, Data* data) {
      log->heard("offered " + asText(*data));
      return agreed;
    };
    gave("set", printer->setString(attribute::kPortname, "NEW"));
    heard("stored " + stored(7) + " beside " + printer->getAttributes());
  }
  gave("set", printer->setLong(attribute::kPortname, 8));
  gave("set", printer->setLong(attribute::kTrueEndOfJob, 1));
  gave("set", printer->setByteArray(attribute::kNpaRevisionLevel, revisions, 3));
  gave("set", printer->setLong(attribute::kHandle, 8));
  gave("set", printer->setString(attribute::kDevice, "x"));
  fake.onVisitor = [](const std::string&, Data*) { return 31u; };
  gave("set", printer->setString(attribute::kPortname, "NEWER"));
  fake.onVisitor = nullptr;
  fake.onOpen = [](const std::string&) { return 1225u; };
  gave("set", printer->setString(attribute::kPortname, "NEWER"));
  fake.onOpen = nullptr;

  scene("attributes of a scanner and a HID");
  for (const char* const family : {"CpdScanner", "CpdHid"}) {
    const auto device = factories.makeDevice(FakeTransport::deviceText(family, 407));
    gave("set", device->setString(attribute::kPortname, "NEW"));
    gave("set", device->setLong(attribute::kTrueEndOfJob, 1));
    gave("set", device->setByteArray(attribute::kNpaRevisionLevel, revisions, 3));
    device->persist();
    device->update();
  }

  expectKept("device", "stores_factories_attributes");
}

}  // namespace
}  // namespace qvn::test
