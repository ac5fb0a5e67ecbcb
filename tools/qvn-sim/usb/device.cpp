#include "usb/device.h"

#include <algorithm>
#include <utility>

namespace sim::usb {
namespace {

// What the device takes of print data that its printer does not.
constexpr int kPrintAhead = 16384;

}  // namespace

Device::Device(EventLoop& loop, FaultSwitches& faults, const Description& description, bool jobEndsInSilence,
               Ports ports)
    : description_(description),
      interfaces_(interfacesOf(description_)),
      ports_(std::move(ports)),
      onDone_([this](Transfer&& transfer) { handlers_.onDone(std::move(transfer)); }),
      printLink_(
          loop,
          [this](Descriptor socket) {
            printIsBroken_ = std::make_shared<bool>(false);
            ports_.print(std::move(socket), printIsBroken_);
          },
          PortLink::Kind::Stream, kPrintAhead),
      bidiLink_(loop, ports_.bidi, PortLink::Kind::Messages, 0),
      scanLink_(loop, ports_.scan, PortLink::Kind::Stream, 0),
      hidLink_(loop, ports_.hid, PortLink::Kind::Stream, 0),
      packetsIn_(loop, faults, bidiLink_, InPipe::Units::Messages, kBulkPacket, onDone_),
      jobsEndInSilence_(jobEndsInSilence),
      printOut_(loop, faults, printLink_, bidiLink_, jobEndsInSilence,
                {.onBidiEnded = [this] { packetsIn_.portEnded(); }, .onUnplug = [this] { unplug(); }},
                onDone_),
      scanIn_(loop, faults, scanLink_, InPipe::Units::Stream, kBulkPacket, onDone_),
      scanOut_(
          scanLink_, [this] { scanIn_.portEnded(); }, onDone_),
      reportsIn_(loop, faults, hidLink_, InPipe::Units::Reports, kReportPacket, onDone_),
      parts_({{kPrintOut, {kPrinterInterface, printOut_, printLink_}},
              {kPacketsIn, {kPrinterInterface, packetsIn_, bidiLink_}},
              {kScanOut, {kScannerInterface, scanOut_, scanLink_}},
              {kScanIn, {kScannerInterface, scanIn_, scanLink_}},
              {kReportsIn, {kPanelInterface, reportsIn_, hidLink_}}}),
      control_(*this, faults) {
  const auto serves = [](Pipe& pipe) { return [&pipe] { pipe.serve(); }; };
  printLink_.handle({.onWritable = serves(printOut_), .onReadable = serves(printOut_)});
  bidiLink_.handle({.onWritable = serves(printOut_), .onReadable = serves(packetsIn_)});
  scanLink_.handle({.onWritable = serves(scanOut_), .onReadable = serves(scanIn_)});
  hidLink_.handle({.onWritable = serves(reportsIn_), .onReadable = serves(reportsIn_)});
}

void Device::unplug() {
  if (!std::exchange(isPlugged_, false)) return;
  if (printIsBroken_) *printIsBroken_ = true;
  handlers_.onUnplugged();
  reset();
}

void Device::submit(Transfer transfer) {
  if (!isPlugged_) return;
  if ((transfer.endpoint & ~kIn) == 0) {
    control_.carryOut(transfer);
    handlers_.onDone(std::move(transfer));
  } else if (Pipe* const to = pipe(transfer.endpoint)) {
    to->submit(std::move(transfer));
  } else {
    transfer.status = Status::Stall;
    handlers_.onDone(std::move(transfer));
  }
}

std::optional<Transfer> Device::cancel(ConnectionId host, std::uint32_t sequence) {
  for (const auto& [address, part] : parts_) {
    if (auto transfer = part.pipe.cancel(host, sequence)) return transfer;
  }
  return std::nullopt;
}

void Device::forget(ConnectionId host) {
  for (const auto& [address, part] : parts_) part.pipe.forget(host);
}

bool Device::configure(std::uint8_t value) {
  if (value != 0 && value != kConfiguration) return false;
  configuration_ = value;
  for (const Interface& interface : interfaces_) {
    if (interface.alternate == 0) setUp(interface.number, 0);
  }
  return true;
}

std::optional<std::uint8_t> Device::alternateOf(std::uint8_t interface) const {
  const bool isThere = configuration_ != 0 && has(interface, 0);
  return isThere ? std::optional(alternates_.at(interface)) : std::nullopt;
}

bool Device::select(std::uint8_t interface, std::uint8_t alternate) {
  if (configuration_ == 0 || !has(interface, alternate)) return false;
  setUp(interface, alternate);
  return true;
}

bool Device::has(std::uint8_t interface, std::uint8_t alternate) const {
  return std::any_of(interfaces_.begin(), interfaces_.end(), [&](const Interface& known) {
    return known.number == interface && known.alternate == alternate;
  });
}

Pipe* Device::pipe(std::uint8_t endpoint) {
  if (configuration_ == 0) return nullptr;
  for (const Interface& interface : interfaces_) {
    if (interface.alternate != alternates_.at(interface.number)) continue;
    for (const Endpoint& known : interface.endpoints) {
      if (known.address == endpoint) return &parts_.at(endpoint).pipe;
    }
  }
  return nullptr;
}

void Device::resetPrinter() {
  if (jobsEndInSilence_) printOut_.endPrintData(true);  // else a job ends as its packets say
  for (Pipe* const of : {static_cast<Pipe*>(&printOut_), static_cast<Pipe*>(&packetsIn_)}) {
    of->discard();
    of->clearHalt();
    of->serve();
  }
}

void Device::setUp(std::uint8_t interface, std::uint8_t alternate) {
  alternates_.at(interface) = alternate;
  if (interface == kPrinterInterface) {
    printOut_.tellPackets(alternate == 1);
    if (isPlugged_) printOut_.endPrintData(false);
  }
  for (const auto& [address, part] : parts_) {
    if (part.interface != interface) continue;
    part.link.close();
    part.pipe.reset();
  }
}

}  // namespace sim::usb
