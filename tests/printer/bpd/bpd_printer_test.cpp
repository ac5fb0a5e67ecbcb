// The states of a Bpd printer: what each operation does, in which order it asks the transport, what it
// answers.
#include <gmock/gmock.h>

#include "common/logging/log_text.h"
#include "device/store/printer_store.h"
#include "printer/bpd/bpd_printer.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "support/kept_log/kept_log.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

constexpr std::uint32_t kHandle = 8;

std::string printerText() {
  std::string text = FakeTransport::printerText(kHandle);
  AttributeCodec::setString(text, attribute::kDevice, "BpdPrinter");
  return text;
}

class KeptBpdPrinterTest : public KeptLog, public LibraryTest {
 protected:
  KeptBpdPrinterTest() {
    fake.onExchange = [](const Data& request) -> std::optional<Data> {
      const int command = request.getBuffer()[4];
      if (command == 5) return bytes({0xA5, 0, 6, 0, 5, request.getBuffer()[5], 0, 0, 5});
      Data reply = bytes({0xA5, 0, 29, 0, command, request.getBuffer()[5], 1, 2, 3});
      reply.append(Data(23, 0));
      return reply;
    };
    fake.onVisitor = [this](const std::string& visitor, Data* data) {
      if (data != nullptr && visitor != visitor_name::kNpaData) {
        const bool isText = visitor == visitor_name::kJobHeader;
        heard(visitor + " with " + (isText ? asText(*data) : LogText().hex(*data).str()));
      }
      if (visitor == visitor_name::kGetNpaMode) data->fill(&npaMode, sizeof npaMode);
      const auto answer = answers.find(visitor);
      return answer == answers.end() ? 0u : answer->second;
    };
  }

  void begin(const std::string& name, std::uint32_t speaksNpa) {
    printer.reset();
    scene(name);
    printer = std::make_unique<BpdPrinter>([this](const std::string& text) {
      heard("verification");
      if (onVerify) onVerify(text);
    });
    printer->setAttributes(printerText());
    npaMode = speaksNpa;
    fake.onWrite = nullptr;
  }

  void open() { gave("open", printer->doOpen()); }
  void start() { gave("start", printer->doStartJob({9, "queue", "host", "job", "user"})); }
  void write(const std::string& text) {
    Data request(text);
    const std::uint32_t rc = printer->doPrint(request);
    gave("print for the account '" + printer->jobDescription().accountNumber() + "'", rc);
  }
  void cancel() { gave("cancel", printer->doCancelPrint()); }
  void end() { gave("end", printer->doEndJob()); }
  void close() { gave("close", printer->doClose()); }
  void exchange() {
    Data request = bytes({0xA5, 0, 3, 0x50, 1, 0});
    Data response(64, 0);
    gave("exchange", printer->doExchangeNpa(request, response));
  }
  static void hear(std::uint32_t handle, const std::uint8_t*, std::uint32_t length, std::uint32_t client) {
    log->heard((LogText() << "alert of " << handle << " as " << client << ", length " << length).str());
  }
  void registerForAlerts() { gave("register", printer->doRegisterForAlerts({1, 0x100000, hear})); }
  void operate() {
    start();
    write("x");
    cancel();
    end();
    exchange();
  }

  std::uint32_t npaMode = 1;
  std::map<std::string, std::uint32_t> answers;
  std::function<void(const std::string&)> onVerify;
  std::unique_ptr<BpdPrinter> printer;
};

TEST_F(KeptBpdPrinterTest, States) {
  begin("a printer without packets", 0);
  operate();
  close();
  open();
  open();
  registerForAlerts();
  gave("unregister", printer->doUnregisterForAlerts(1));
  Data cache;
  gave("cache", printer->doGetCache(cache));
  start();
  start();
  write("data");
  end();
  write("x");
  cancel();
  end();
  close();
  close();

  begin("a printer with packets", 1);
  const std::string account = "\n@PJL LJOBINFO ACCOUNTNUMBER = \"77\"\n";
  open();
  exchange();
  start();
  write(account);
  end();
  registerForAlerts();
  start();
  exchange();
  write(account);
  write("\n@PJL LJOBINFO ACCOUNTNUMBER = \"88\"\n");
  write("more");
  cancel();
  std::uint32_t state = 0;
  gave("state", printer->doGetCurrentState(state));
  end();
  fake.deliver(bytes({0xA5, 0, 9, 0, 0xF0, 0x73, 1, 1, 8, 1, 8, 0}));
  // The first data alone names a job, as far as the limit of that time.
  start();
  write("x");
  write(account);
  end();
  set("JobAccountMarker", 2);
  start();
  write("123" + account);
  end();
  gave("unregister", printer->doUnregisterForAlerts(1));
  start();
  write("x");
  end();
  close();

  begin("what cannot be opened or started", 1);
  fake.onOpen = [](const std::string&) { return 1225u; };
  open();
  fake.onOpen = nullptr;
  answers[visitor_name::kGetNpaMode] = 31;
  open();
  answers.clear();
  open();
  fake.onOpen = [](const std::string&) { return 1460u; };
  start();
  fake.onOpen = nullptr;
  fake.onExchange = nullptr;
  answers[visitor_name::kSetNpaWrapMode] = 1;
  start();
  answers = {{visitor_name::kJobHeader, 64}};
  start();
  answers.clear();
  begin("unverified", 0);
  std::string unverified = printerText();
  AttributeCodec::setLong(unverified, attribute::kUnverified, 1);
  printer->setAttributes(unverified);
  open();
  PrinterStore::getInstance().persist(unverified);
  open();
  onVerify = [](const std::string& text) {
    std::string verified = text;
    AttributeCodec::setLong(verified, attribute::kUnverified, 0);
    AttributeCodec::setString(verified, attribute::kNickname, "found");
    PrinterStore::getInstance().persist(verified);
  };
  open();
  heard("attributes " + printer->getAttributes());
  BpdPrinter nameless([](const std::string&) {});
  nameless.doRegisterForNotifications({1, 1, Data(), [](auto...) {}});
  nameless.doUnregisterForNotifications(1);

  begin("writes that fail", 0);
  open();
  start();
  fake.onWrite = [](Data& data) { data.setRc(64); };
  write("x");
  write("x");
  exchange();
  fake.onWrite = nullptr;
  write("x");
  fake.onWrite = [](Data& data) { data.setRc(64); };
  write("x");
  end();
  start();
  write("x");
  cancel();
  operate();
  open();
  failCalls("close", 31);
  close();
  fake.onCall = nullptr;
  close();

  expectKept("printer/bpd", "states");
}

}  // namespace
}  // namespace qvn::test
