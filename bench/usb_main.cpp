// The USB transport against libusb alone: print data, and packets with their replies. Its module is used
// through its managers, as the library does it; kernel and devices are the USB bed's, the same to both sides.
// Prints the rows and adds them to the file that the argument names.
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "home.h"
#include "measure.h"
#include "peers/bare_usb.h"
#include "peers/usb_printer.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/device.h"
#include "qvn/transport/lent_data.h"
#include "ratio_table.h"
#include "support/transport/transport_module.h"
#include "support/usb/usb_bed.h"

namespace qvn::bench {
namespace {

constexpr std::size_t kBlockSize = 64 * 1024;
constexpr std::uint32_t kBlocks = 4096;
constexpr std::uint32_t kExchangesPerRound = 100;
constexpr std::size_t kRoomForReplies = 512;

std::string attributesOf(const std::string& serial) {
  std::string text;
  AttributeCodec::setString(text, attribute::kDevice, "CpdPrinter");
  AttributeCodec::setLong(text, attribute::kHandle, 1);
  AttributeCodec::setLong(text, attribute::kVid, UsbPrinter::kVendor);
  AttributeCodec::setLong(text, attribute::kPid, UsbPrinter::kProduct);
  AttributeCodec::setString(text, attribute::kSerialNumber, serial);
  AttributeCodec::setLong(text, attribute::kNpaWrapping, 1);
  return text;
}

// The device as the module knows it. Its replies are counted.
class Client : public Device {
 public:
  explicit Client(const std::string& attributes) { setAttributes(attributes); }
  ~Client() override { endReferences(); }

  void doAccept(Data& data) override {
    if (data.getLength() == UsbPrinter::kReply.size()) ++replies;
  }
  using Device::doAccept;

  std::uint32_t replies = 0;  // each comes while its exchange waits
};

// The printer through the transport, connected as it is during a job.
class Transport {
 public:
  explicit Transport(const std::string& attributes)
      : client_(attributes),
        bidi_(module_, attributes, connection_name::kBidi, &client_),
        print_(module_, attributes, connection_name::kPrint) {
    require(bidi_.openCode(), "opening \"bidi\"");
    require(print_.openCode(), "opening \"print\"");
  }

  void write(const std::vector<std::uint8_t>& block) {
    LentData data(block.data(), static_cast<std::uint32_t>(block.size()));
    print_->write(data);
    require(data.getRc(), "write");
    if (data.getCount() != block.size()) throw std::runtime_error("print data was lost");
  }

  void exchange() {
    const std::uint32_t before = client_.replies;
    LentData request(UsbPrinter::kRequest.data(), UsbPrinter::kRequest.size());
    require(test::visit(module_, *bidi_, visitor_name::kNpaData, &request, &client_), "the exchange");
    require(request.getRc(), "the reply");
    if (client_.replies != before + 1) throw std::runtime_error("a reply was lost");
  }

 private:
  test::TransportModule module_;
  Client client_;
  test::OpenConnection bidi_;
  test::OpenConnection print_;
};

void run(const char* file) {
  const Home home;
  UsbPrinter first("1");
  UsbPrinter second("2");
  test::UsbBed bed;
  bed.plug(first, "1-1");
  bed.plug(second, "1-2");
  Transport transport(attributesOf("1"));
  BareUsb bare(2);

  RatioTable table;
  const std::vector<std::uint8_t> block(kBlockSize, 'x');
  table.atLeast("USB print: 256 MiB in 64 KiB writes / bare loop",
                "going through the transport slows no printer on USB down", 0.8,
                medianRatio([&] { return timeOf(kBlocks, [&] { bare.write(block); }); },
                            [&] { return timeOf(kBlocks, [&] { transport.write(block); }); }));
  std::array<std::uint8_t, kRoomForReplies> reply;
  table.atMost(
      "USB exchange: NPA packet and reply / bare OUT and IN",
      "a status poll of a printer on USB is hardly slower than the bus", 1.3,
      medianRatio(
          [&] { return timeOf(kExchangesPerRound, [&] { transport.exchange(); }); },
          [&] { return timeOf(kExchangesPerRound, [&] { bare.exchange(UsbPrinter::kRequest, reply); }); }));
  table.print();
  table.appendTo(file);
}

}  // namespace
}  // namespace qvn::bench

int main(int argc, char** argv) { return qvn::bench::benchMain(argc, argv, qvn::bench::run); }
