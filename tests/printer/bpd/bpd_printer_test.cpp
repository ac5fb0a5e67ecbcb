// The states of a Bpd printer: what each operation does, in which order it asks the transport, what it
// answers.
#include <gmock/gmock.h>

#include <cstring>

#include "common/logging/log_text.h"
#include "device/store/printer_store.h"
#include "printer/bpd/bpd_printer.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "support/kept_log/kept_log.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint32_t kHandle = 8;

void ignoreAlert(std::uint32_t, const std::uint8_t*, std::uint32_t, std::uint32_t) {}

std::string printerText() {
  std::string text = FakeTransport::printerText(kHandle);
  AttributeCodec::setString(text, attribute::kDevice, "BpdPrinter");
  return text;
}

class BpdPrinterTest : public LibraryTest {
 protected:
  BpdPrinterTest() {
    printer = std::make_unique<BpdPrinter>([this](const std::string& text) {
      ++verifications;
      if (onVerify) onVerify(text);
    });
    printer->setAttributes(printerText());
    fake.onExchange = [](const Data& request) -> std::optional<Data> {
      const int command = request.getBuffer()[4];
      if (command == 5) return bytes({0xA5, 0, 6, 0, 5, request.getBuffer()[5], 0, 0, 5});
      Data reply = bytes({0xA5, 0, 29, 0, command, request.getBuffer()[5], 1, 2, 3});
      reply.append(Data(23, 0));
      return reply;
    };
    fake.onVisitor = [this](const std::string& visitor, Data* data) {
      if (data != nullptr) given[visitor] = asText(*data);
      if (visitor == visitor_name::kGetNpaMode) data->fill(&npaMode, sizeof npaMode);
      const auto answer = answers.find(visitor);
      return answer == answers.end() ? 0u : answer->second;
    };
  }

  std::uint32_t print(const std::string& text) {
    Data request(text);
    return printer->doPrint(request);
  }

  // The number that the visitor was given.
  std::uint32_t number(const std::string& visitor) {
    std::uint32_t value = 0;
    EXPECT_EQ(given[visitor].size(), sizeof value);
    std::memcpy(&value, given[visitor].data(), std::min(given[visitor].size(), sizeof value));
    return value;
  }

  std::uint32_t npaMode = 1;
  std::map<std::string, std::string> given;
  std::map<std::string, std::uint32_t> answers;
  std::function<void(const std::string&)> onVerify;
  int verifications = 0;
  std::unique_ptr<BpdPrinter> printer;
};

TEST_F(BpdPrinterTest, APlainPrinterGetsNothingButItsData) {
  npaMode = 0;
  printer->doOpen();
  EXPECT_EQ(printer->doStartJob({9, "queue", "host", "job", "user"}), 0u);
  EXPECT_EQ(print("data"), 0u);
  EXPECT_EQ(print("more"), 0u);
  EXPECT_EQ(number(visitor_name::kSetNonNpaPrinter), 0u);
  EXPECT_EQ(fake.written(), "datamore");
  EXPECT_EQ(given[visitor_name::kJobHeader],
            "<HostName>host</HostName><JobName>job</JobName><NpaSupported>0</NpaSupported>"
            "<QueueName>queue</QueueName><QueueNumber></QueueNumber><SpoolerJobId>9</SpoolerJobId>"
            "<TrueEndOfJob>0</TrueEndOfJob><UserName>user</UserName>");
}

TEST_F(BpdPrinterTest, AnNpaJobWithoutAlertsExchangesNothing) {
  printer->doOpen();
  EXPECT_EQ(printer->doStartJob({}), 0u);
  EXPECT_EQ(number(visitor_name::kSetNpaWrapMode), 0u);
  EXPECT_THAT(given[visitor_name::kJobHeader], HasSubstr("<NpaSupported>1</NpaSupported>"));
  EXPECT_FALSE(printer->isBidiAllowed());
  EXPECT_EQ(print("\n@PJL LJOBINFO ACCOUNTNUMBER = \"77\""), 0u);
  EXPECT_EQ(printer->jobDescription().accountNumber(), "77");
}

TEST_F(BpdPrinterTest, AnNpaJobWithAlertsIsStartedNamedAndEnded) {
  printer->doOpen();
  ASSERT_EQ(printer->doRegisterForAlerts({1, 0x100000, ignoreAlert}), 0u);
  EXPECT_EQ(printer->doStartJob({9, "queue", "host", "job", "user"}), 0u);
  EXPECT_EQ(number(visitor_name::kSetNpaWrapMode), 1u);
  EXPECT_EQ(given[visitor_name::kStartNpaMode].size(), 19u);
  EXPECT_EQ(printer->jobDescription().printerJobId(), 5u);
  EXPECT_TRUE(printer->isBidiAllowed());

  EXPECT_EQ(print("\n@PJL LJOBINFO ACCOUNTNUMBER = \"77\"\n"), 0u);
  EXPECT_EQ(print("\n@PJL LJOBINFO ACCOUNTNUMBER = \"88\"\n"), 0u) << "the first one counts";
  const std::string packet = given[visitor_name::kNamePrintJob];
  EXPECT_EQ(packet.substr(6, 2), std::string("\0\5", 2));
  EXPECT_EQ(packet.substr(9), std::string("HT:host;UR:user;SC:TCP 9400;JN:job;QU:queue;AN:77;\0", 51));
}

TEST_F(BpdPrinterTest, TheFirstDataAloneNamesTheJob) {
  printer->doOpen();
  printer->doRegisterForAlerts({1, 0x100000, ignoreAlert});
  printer->doStartJob({});
  fake.takeCalls();
  const std::string line = "\n@PJL LJOBINFO ACCOUNTNUMBER = \"77\"";
  print("x");
  EXPECT_THAT(given[visitor_name::kNamePrintJob], HasSubstr("AN:;"));
  print(line);
  EXPECT_EQ(printer->jobDescription().accountNumber(), "");
  EXPECT_EQ(fake.calls("visit namePrintJobVisitor").size(), 1u);
  printer->doEndJob();

  // Every job is searched, with the limit of that time.
  printer->doStartJob({});
  print(line);
  EXPECT_THAT(given[visitor_name::kNamePrintJob], HasSubstr("AN:77;"));
  printer->doEndJob();
  set("JobAccountMarker", 2);
  printer->doStartJob({});
  EXPECT_EQ(printer->jobDescription().accountNumber(), "");
  print("123" + line);
  EXPECT_EQ(printer->jobDescription().accountNumber(), "");
  EXPECT_EQ(fake.calls("visit namePrintJobVisitor").size(), 3u);
}

TEST_F(BpdPrinterTest, AnUnverifiedDeviceIsLookedForBeforeItIsOpened) {
  std::string unverified = printerText();
  AttributeCodec::setLong(unverified, attribute::kUnverified, 1);
  printer->setAttributes(unverified);
  EXPECT_EQ(printer->doOpen(), 1168u) << "nothing is stored";
  PrinterStore::getInstance().persist(unverified);
  EXPECT_EQ(printer->doOpen(), 1u);
  EXPECT_THAT(fake.calls("open"), IsEmpty());

  onVerify = [](const std::string& text) {
    std::string verified = text;
    AttributeCodec::setLong(verified, attribute::kUnverified, 0);
    AttributeCodec::setString(verified, attribute::kNickname, "found");
    PrinterStore::getInstance().persist(verified);
  };
  EXPECT_EQ(printer->doOpen(), 0u);
  EXPECT_EQ(verifications, 3);
  std::string name;
  AttributeCodec::getString(printer->getAttributes(), attribute::kNickname, name);
  EXPECT_EQ(name, "found");
}

class KeptBpdPrinterTest : public KeptLog, public BpdPrinterTest {
 protected:
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
  void write(const std::string& text) { gave("print", print(text)); }
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
  open();
  exchange();
  registerForAlerts();
  start();
  exchange();
  write("\n@PJL LJOBINFO ACCOUNTNUMBER = \"77\"\n");
  write("more");
  cancel();
  std::uint32_t state = 0;
  gave("state", printer->doGetCurrentState(state));
  end();
  fake.deliver(bytes({0xA5, 0, 9, 0, 0xF0, 0x73, 1, 1, 8, 1, 8, 0}));
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
