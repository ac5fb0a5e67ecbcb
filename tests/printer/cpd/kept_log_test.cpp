// What a Cpd printer does and writes.
#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <thread>
#include <tuple>

#include "common/logging/log_text.h"
#include "npa/job_commands.h"
#include "printer/printer_fixture.h"
#include "qvn/transport/settings.h"
#include "support/kept_log/kept_log.h"
#include "support/registry_values.h"

namespace qvn::test {
namespace {

class KeptCpdPrinterTest : public KeptLog, public CpdPrinterTest {
 protected:
  // A new printer, whose client hears what becomes of its jobs.
  void begin(const std::string& name) {
    printer.reset();
    scene(name);
    set("CpdPrinterMwo", 0);
    makePrinter();
    printer->doRegisterForNotifications({2, 1, Data(), onNotification});
    writeRc = 0;
    fake.onWrite = [this](Data& data) { write(data); };
  }
  static void onNotification(std::uint32_t, std::uint32_t category, std::uint32_t id, const std::uint8_t*,
                             std::uint32_t, std::uint32_t client) {
    log->heard("notification " + std::to_string(category) + "/" + std::to_string(id) + " as " +
               std::to_string(client));
  }

  // The device takes what it may, and acknowledges a cancelled job.
  void write(Data& data) {
    data.setRc(writeRc);
    data.setCount(writeRc == 0 ? data.getLength() : 0);
    if (data.getLength() == 4096 && writeRc == 0) {
      fake.deliver(bytes({0xA5, 0, 9, 0, 0xF0, 0x73, 1, 1, 8, 1, 8, 0}));
    }
  }

  // From now on a write waits until the client has stopped the writer.
  void holdWrites() {
    writing = false;
    fake.onWrite = [this, stops = times("Mwo::stop()")](Data& data) {
      writing = true;
      while (times("Mwo::stop()") == stops) std::this_thread::yield();
      write(data);
    };
  }

  // What a call gave, and for how long it slept.
  template <typename Call, typename Describe>
  void timed(const Call& call, const Describe& describe) {
    const std::uint64_t before = clock.totalSlept();
    const std::uint32_t rc = call();
    const std::uint64_t slept = clock.totalSlept() - before;
    gave(describe() + (slept == 0 ? "" : ", having slept " + std::to_string(slept)), rc);
  }

  void open() { gave("open", printer->doOpen()); }
  void start() { gave("start", printer->doStartJob({9, "queue", "host", "job", "user"})); }
  void write(const std::string& text) {
    Data data(text);
    timed([&] { return printer->doPrint(data); },
          [&] {
            const std::string left = data.getLength() == 0 ? "" : ", left " + asText(data);
            return "print of " + std::to_string(data.getCount()) + left +
                   (printer->jobDescription().isComplete() ? ", complete" : "");
          });
  }
  void cancel() { gave("cancel", printer->doCancelPrint()); }
  void end() {
    timed([&] { return printer->doEndJob(); }, [] { return "end"; });
  }
  void close() { gave("close", printer->doClose()); }
  void exchange(Data request, std::uint32_t size = 64) {
    Data response(size, 0xFF);
    const std::uint32_t rc = printer->doExchangeNpa(request, response);
    gave((LogText() << "exchange for ").hex(rc == 0 ? response : Data()).str(), rc);
  }
  void getCache(std::uint32_t size = 64) {
    Data cache(size, 0xFF);
    const std::uint32_t rc = printer->doGetCache(cache);
    gave((LogText() << "cache ").hex(rc == 0 ? cache : Data()).str(), rc);
  }
  void askState() {
    std::uint32_t state = 0;
    const std::uint32_t rc = printer->doGetCurrentState(state);
    gave("state " + std::to_string(state), rc);
  }
  // All that a job is asked for, but its end.
  void operate() {
    write("x");
    cancel();
    exchange(GetCacheCommand().packet());
  }

  std::uint32_t writeRc = 0;
  std::atomic<bool> writing{false};
};

TEST_F(KeptCpdPrinterTest, States) {
  begin("opened twice and closed");
  open();
  open();
  exchange(bytes({0xA5, 0, 3, 0x50, 1, 0}));
  close();
  failCalls("close", 31);
  close();
  fake.onCall = nullptr;
  close();
  fake.onOpen = [](const std::string&) { return 1225u; };
  open();
  fake.onOpen = nullptr;

  begin("what a closed printer is asked for");
  start();
  operate();
  end();
  gave("unregister", printer->doUnregisterForNotifications(9));
  gave("unregister", printer->doUnregisterForNotifications(2));
  CpdPrinter nameless;
  gave("register", nameless.doRegisterForNotifications({1, 1, Data(), onNotification}));
  gave("unregister", nameless.doUnregisterForNotifications(1));

  begin("a job");
  open();
  start();
  start();
  open();
  exchange(GetCacheCommand().packet());
  write("data");
  askState();
  write("more" + marker());
  close();
  end();
  askState();
  close();

  begin("jobs that cannot start");
  open();
  operate();
  end();
  fake.onOpen = [](const std::string&) { return 1460u; };
  start();
  fake.onOpen = nullptr;
  startReply.reset();
  start();
  startReply = bytes({0xA5, 0, 6, 0x80, 5, 0, 0, 0, 0});
  start();
  operate();
  end();
  startReply = bytes({0xA5, 0, 6, 0, 5, 0, 0, 0, 5});
  fake.onVisitor = [](const std::string& visitor, Data*) { return visitor == "npaDataVisitor" ? 1u : 0u; };
  start();
  fake.onVisitor = nullptr;
  end();
  close();

  begin("the marker, after which exchanges are allowed until there are more data");
  open();
  start();
  for (const std::string& data :
       {"x" + marker(), std::string("x"), marker(), marker() + "x", marker().substr(1)})
    write(data);
  end();

  begin("a cancelled job");
  open();
  start();
  write("some");
  cancel();
  operate();
  end();

  begin("writes that fail");
  open();
  start();
  writeRc = 64;
  write("abc");
  askState();
  write("abc");
  exchange(GetCacheCommand().packet());
  start();
  writeRc = 122;
  write("abc");
  writeRc = 0;
  write("abc");
  askState();
  writeRc = 64;
  write("abc");
  cancel();
  end();
  start();
  const std::function<void(Data&)> failures[] = {[](Data& data) {
                                                   data.setRc(64);
                                                   data.setCount(1);
                                                 },
                                                 [](Data& data) {
                                                   data.setCount(2);
                                                   throw 5;
                                                 }};
  for (const auto& failure : failures) {
    fake.onWrite = failure;
    write("abc");
  }
  end();
  start();

  expectKept("printer/cpd", "states");
}

TEST_F(KeptCpdPrinterTest, Tasks) {
  begin("locked for the job, and told the date");
  set("AIOLockEnabled", 1);
  set("CpdPrinterDate", 1);
  store(std::string(kLibraryRegistryRoot) + "Settings", "CpdPrinterHostId",
        platform::registry::ValueType::Binary, "host 1");
  clock.setNow(std::chrono::system_clock::from_time_t(1009843200 + 10 * 86400));
  open();
  start();
  end();
  lockReply = bytes({0xA5, 0, 6, 0, 0xE0, 0x82, 2, 1, 1});
  start();
  lockReply.reset();
  start();
  lockReply = bytes({0xA5, 0, 6, 0x80, 0xE0, 0x82, 2, 1, 0});  // rejected: the job's data is thrown away
  start();
  operate();
  end();
  set("AIOLockEnabled", 0);
  fake.onExchange = [this](const Data& request) {
    return request.getBuffer()[5] == 0x84 ? std::nullopt : reply(request);
  };
  start();

  begin("an end that is not answered");
  set("CpdPrinterDate", 0);
  open();
  start();
  write(marker());
  endReply.reset();
  end();
  endReply = jobReply(1, 9);

  begin("a cancel that is not acknowledged");
  fake.onWrite = nullptr;
  open();
  start();
  write("no marker");
  end();
  EXPECT_TRUE(fake.written().ends_with(std::string(256 * 4096, '\0')));

  begin("a completion that is not told");
  set("TeojDuration", 3000);
  open();
  start();
  write(marker());
  completedReply = jobReply(2, 25);
  end();
  start();
  write(marker());
  completedReply.reset();
  end();
  for (const auto& [length, interval, duration] :
       {std::tuple{27u, 500u, 2000u}, {25u, 1000u, 0u}, {25u, 700u, 1000u}}) {
    set("TeojInterval", interval);
    set("TeojDuration", duration);
    completedReply = jobReply(2, length);
    start();
    write(marker());
    end();
  }

  begin("the cache");
  completedReply = jobReply(2, 26);
  fake.onVisitor = [&](const std::string& visitor, Data*) { return visitor == "cacheVisitor" ? 1u : 0u; };
  getCache();
  open();
  start();
  exchange(GetCacheCommand().packet());
  exchange(GetCacheCommand().packet(), 5);
  getCache();
  end();
  exchange(GetCacheCommand().packet());
  fake.onVisitor = [&](const std::string& visitor, Data*) {
    if (visitor == "cacheVisitor") fake.deliver(*cacheReply);
    return 0u;
  };
  getCache();
  getCache(10);
  getCache(3);
  fake.onVisitor = nullptr;
  getCache();

  expectKept("printer/cpd", "tasks");
}

TEST_F(KeptCpdPrinterTest, BufferedWriter) {
  const auto beginBuffered = [this](const std::string& name) {
    begin(name);
    set("CpdPrinterMwo", 1);
    open();
    start();
    write("first");
    holdWrites();
  };
  beginBuffered("written at once, later, and after a failure");
  write("second");
  fake.onWrite = [this, held = fake.onWrite, failed = false](Data& data) mutable {
    writeRc = std::exchange(failed, true) ? 0 : 64;
    held(data);
  };
  end();
  start();
  holdWrites();
  write("third");
  end();
  close();

  beginBuffered("too much for the printer");
  for (int i = 0; i < 12; ++i) write("x");
  end();

  beginBuffered("cancelled");
  write("y");
  write("y");
  while (!writing) std::this_thread::yield();
  printer->requestCancel();
  end();

  expectKept("printer/cpd", "writer");
}

}  // namespace
}  // namespace qvn::test
