// What a Cpd scanner does and writes.
#include <gmock/gmock.h>

#include <thread>
#include <vector>

#include "common/logging/log_text.h"
#include "device/store/printer_store.h"
#include "scanner/cpd/scanner_fixture.h"
#include "support/kept_log/kept_log.h"

namespace qvn::test {
namespace {

class KeptCpdScannerTest : public KeptLog, public CpdScannerTest {
 protected:
  void begin(const std::string& name) {
    closeScanner();
    scene(name);
    makeScanner();
  }

  static std::uint32_t hear(std::uint32_t client, std::uint32_t job, std::uint32_t handle, std::uint32_t mask,
                            const std::uint8_t* data, std::uint32_t length) {
    log->heard((LogText() << "data of " << handle << " as " << client << "/" << job << "/" << mask << ": ")
                   .hex(data, length)
                   .str());
    return 0;
  }
  static void hearProgress(std::uint32_t handle, std::uint32_t category, std::uint32_t id,
                           const std::uint8_t*, std::uint32_t, std::uint32_t client) {
    if (category != 3) return;
    log->heard((LogText() << "notification of " << handle << " as " << client << ": " << id).str());
  }

  void open() { gave("open", scanner->doOpen()); }
  void add(std::uint32_t client, std::uint32_t mask) {
    gave("register", scanner->doRegisterForAsyncData({mask, client, hear}));
  }
  void remove(std::uint32_t client) { gave("unregister", scanner->doUnregisterForAsyncData(client)); }
  void start() { gave("start", scanner->doStartJob(1, nullptr)); }
  void cancel() { gave("cancel", scanner->doCancelJob(1)); }
  void end() { gave("end", scanner->doEndJob(1)); }
  void close() { gave("close", scanner->doClose()); }
  void send(Data data) { gave("send", scanner->doExchangeData(1, data)); }
  void ask(Data request) {
    Data response("left over");
    const std::uint32_t rc = scanner->doExchangeData(1, request, response);
    gave((LogText() << "exchange of ").hex(response).str(), rc);
  }
  void deliver(const Data& data) { gave("delivery", fake.deliver(data)); }
  void lose() { gave("loss", scanner->doOnConnectionLost()); }

  // What a state does not accept, or takes for nothing.
  void operate() {
    Data version = bytes({0x1B, 'S', 'V', 0, 0, 0, 0, 0});
    start();
    send(version);
    ask(version);
    open();
    add(3, 0);
    remove(3);
    close();
  }
  void accept() { gave("accept", refusesData() ? 1 : 0); }
};

TEST_F(KeptCpdScannerTest, States) {
  begin("a closed scanner");
  operate();
  lose();
  cancel();
  end();
  add(1, 16);
  remove(1);
  accept();
  close();
  fake.onOpen = [](const std::string&) { return 1225u; };
  open();
  fake.onOpen = nullptr;

  begin("an open scanner");
  open();
  open();
  cancel();
  end();
  lose();
  accept();
  send(bytes({0x1B, 'S', 'V', 0, 0, 0, 0, 0}));
  std::uint32_t state = 0;
  gave("state", scanner->doGetCurrentState(state));
  ask(bytes({0x1B, 'S', 'V', 0, 0, 0, 0, 0}));
  const Data dpi = bytes({0x1B, 'S', 'D', 44, 1, 44, 1, 0});
  const Data ownReply = bytes({0x1B, 'X', 'Y', 'Z', 1, 0, 0, 0, 9});
  const struct {
    Data request;
    std::vector<Data> before;
    Data last;
  } exchanges[] = {
      {dpi, {block(1), block(2)}, status(2)},
      {dpi, {status(0)}, status(7)},
      {bytes({0x1B, 'S', 'V', 0, 0, 0, 0, 0}), {}, status(0)},
      {bytes({0x1B, 'S', 'G', 0, 0, 0, 0, 0}), {}, status(0)},
      {bytes({1, 2, 3}), {}, status(0)},
      {bytes({0x1B, 'X', 'Y', 'Z', 0, 0, 0x80, 0}), {status(0)}, ownReply},
  };
  for (const auto& exchange : exchanges) {
    fake.onExchange = [&](const Data&) {
      for (const Data& data : exchange.before) fake.deliver(data);
      return exchange.last;
    };
    ask(exchange.request);
  }
  fake.onVisitor = [](const std::string&, Data*) { return 64u; };
  ask(bytes({0x1B, 'S', 'V', 0, 0, 0, 0, 0}));
  fake.onVisitor = nullptr;
  fake.onWrite = [](Data& data) { data.setRc(64); };
  start();
  fake.onWrite = nullptr;
  close();
  close();

  begin("a scan");
  PrinterStore::getInstance().persist(FakeTransport::printerText(7));
  QvnOpenPrinter(1, 7);
  QvnRegisterForNotificationsPrinter(1, 7, 3, hearProgress);
  open();
  add(2, 0);
  add(1, 16);
  add(1, 5);
  gave("register", scanner->doRegisterForAsyncData({0, 3, nullptr}));
  start();
  cancel();
  end();
  close();
  set("CpdScanPerformanceNotifications", 1);
  makeScanner();
  open();
  start();
  operate();
  end();
  deliver(block(1));
  deliver(Data());
  Data foreign = block(4);
  CpdScannerAsyncDataManager::getInstance().accept(408, foreign);
  for (int i = 0; i < 2; ++i) remove(2);
  deliver(status(0));
  operate();
  lose();
  cancel();
  deliver(block(2));
  end();

  begin("a scan that is cancelled");
  open();
  start();
  cancel();
  operate();
  lose();
  cancel();
  deliver(block(1));
  deliver(status(3));
  end();
  start();
  fake.onWrite = [](Data& data) { data.setRc(1460); };
  cancel();
  fake.onWrite = nullptr;
  end();
  QvnUnregisterForNotificationsPrinter(1, 7);
  besideOthers([this] {
    QvnClosePrinter(1, 7);
    while (times("Mwo::stop() handle=7") == 0) std::this_thread::yield();
  });

  begin("closed before the end, and cancelled");
  for (const bool cancelled : {false, true}) {
    open();
    start();
    cancelled ? cancel() : deliver(status(0));
    close();
    accept();
  }

  begin("a lost connection");
  open();
  start();
  deliver(block(1));
  fake.loseConnection();
  lose();
  end();
  start();
  close();
  deliver(block(1));

  expectKept("scanner/cpd", "states");
}

}  // namespace
}  // namespace qvn::test
