#include "peers/usb_printer.h"

#include <algorithm>
#include <optional>
#include <span>

#include "support/usb/descriptor_builder.h"

namespace qvn::bench {
namespace {

using test::Bytes;

constexpr std::uint8_t kPrinterClass = 7;
constexpr std::uint8_t kClassRequestIn = 0xA1;
constexpr std::uint8_t kGetDeviceId = 0;

Bytes printerDescriptors() {
  using Printer = UsbPrinter;
  return test::DescriptorBuilder(Printer::kVendor, Printer::kProduct)
      .interface(Printer::kInterface, 0, kPrinterClass, 1, 1)
      .bulk(Printer::kOut)
      .interface(Printer::kInterface, Printer::kBothWays, kPrinterClass, 1, 2)
      .bulk(Printer::kOut)
      .bulk(Printer::kIn);
}

// Behind its length, which counts itself.
Bytes deviceId() {
  constexpr char kText[] = "MFG:Qvn;MDL:Bench;CMD:NPA,PJL;CLS:PRINTER;FAM:CpdPrinter;";
  Bytes answer = {0, static_cast<std::uint8_t>(sizeof kText - 1 + 2)};
  answer.insert(answer.end(), std::begin(kText), std::end(kText) - 1);
  return answer;
}

}  // namespace

UsbPrinter::UsbPrinter(const std::string& serial)
    : ScriptedDevice(printerDescriptors(), {"Qvn", "Bench", serial}) {
  onControl = [](const Setup& setup, auto) -> std::optional<Bytes> {
    if (setup[0] == kClassRequestIn && setup[1] == kGetDeviceId) return deviceId();
    return std::nullopt;
  };
  onOut = [this](std::uint8_t, std::span<const std::uint8_t> data, bool) {
    if (std::equal(data.begin(), data.end(), kRequest.begin(), kRequest.end()))
      send(kIn, Bytes(kReply.begin(), kReply.end()));
    return Taken{data.size()};
  };
}

}  // namespace qvn::bench
