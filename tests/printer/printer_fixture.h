// A Cpd printer on the fake transport, with a clock that skips over every wait.
#pragma once

#include <memory>
#include <string>

#include "npa/npa_packet.h"
#include "printer/cpd/cpd_printer.h"
#include "support/library_fixture.h"
#include "support/manual_clock.h"

namespace qvn::test {

class CpdPrinterTest : public SkippingClock, public LibraryTest {
 protected:
  CpdPrinterTest() {
    makePrinter();
    fake.onExchange = [this](const Data& request) { return reply(request); };
  }

  void makePrinter() {
    printer = std::make_unique<CpdPrinter>();
    printer->setAttributes(FakeTransport::printerText(7));
  }

  // The device: accepts jobs with the id 5, has every job completed.
  virtual std::optional<Data> reply(const Data& request) {
    const ByteReader packet(request);
    const int command = packet.u8(4).value_or(0);
    const int sub = packet.u8(5).value_or(0);
    if (command == 5 && sub == 0) return startReply;
    if (command == 5 && sub == 1) return endReply;
    if (command == 5 && sub == 2) return completedReply;
    if (command == 0xE0 && sub == 0x81) return cacheReply;
    if (command == 0xE0 && sub == 0x82) return lockReply;
    return bytes({0xA5, 0, 3, 0, command, sub});
  }

  // A reply of `length` bytes to the job command `sub`.
  static Data jobReply(int sub, std::uint32_t length) {
    Data data = bytes({0xA5, 0, static_cast<int>(length) - 3, 0, 5, sub});
    data.append(Data(length - 6, 0));
    return data;
  }

  std::uint32_t print(const std::string& text) {
    Data request(text);
    return printer->doPrint(request);
  }

  // Opens the printer and starts a job without the buffered writer.
  void startJob() {
    set("CpdPrinterMwo", 0);
    ASSERT_EQ(printer->doOpen(), 0u);
    ASSERT_EQ(printer->doStartJob({}), 0u);
    fake.takeCalls();
  }

  static std::string marker() { return {"\x1B\x2A\x82\x00\x00\x00\x00\xAC", 8}; }

  std::optional<Data> startReply = bytes({0xA5, 0, 6, 0, 5, 0, 0, 0, 5});
  std::optional<Data> endReply = jobReply(1, 9);
  std::optional<Data> completedReply = jobReply(2, 26);
  std::optional<Data> lockReply = bytes({0xA5, 0, 6, 0, 0xE0, 0x82, 2, 1, 0});
  // Entry 17 with one byte, entry 18 with two.
  std::optional<Data> cacheReply = bytes({0xA5, 0,  20, 0,    0xE0, 0x81, 0, 0xF0, 0,   0, 0, 0, 0, 0, 0,  //
                                          0,    17, 1,  0xAA, 0,    18,   2, 0xBB, 0xCC});
  std::unique_ptr<CpdPrinter> printer;
};

}  // namespace qvn::test
