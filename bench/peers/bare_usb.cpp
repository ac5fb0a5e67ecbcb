#include "peers/bare_usb.h"

#include <cstddef>
#include <stdexcept>
#include <string>

#include "peers/usb_printer.h"

namespace qvn::bench {
namespace {

void check(int result, const char* operation) {
  if (result < 0) throw std::runtime_error(std::string(operation) + " gave " + libusb_error_name(result));
}

bool isAt(libusb_device* device, std::uint8_t port) {
  std::uint8_t ports[8];
  return libusb_get_port_numbers(device, ports, sizeof ports) == 1 && ports[0] == port;
}

}  // namespace

BareUsb::BareUsb(std::uint8_t port) {
  libusb_context* context = nullptr;
  check(libusb_init(&context), "libusb_init");
  context_.reset(context);
  libusb_device** devices = nullptr;
  const ssize_t count = libusb_get_device_list(context, &devices);
  libusb_device_handle* opened = nullptr;
  for (ssize_t i = 0; i < count; ++i) {
    if (isAt(devices[i], port)) libusb_open(devices[i], &opened);
  }
  libusb_free_device_list(devices, 1);
  if (opened == nullptr) throw std::runtime_error("libusb does not open the printer");
  device_.reset(opened);
  check(libusb_claim_interface(opened, UsbPrinter::kInterface), "libusb_claim_interface");
  check(libusb_set_interface_alt_setting(opened, UsbPrinter::kInterface, UsbPrinter::kBothWays),
        "libusb_set_interface_alt_setting");
}

void BareUsb::write(std::span<const std::uint8_t> bytes) {
  submit(out_, UsbPrinter::kOut, bytes.data(), bytes.size());
  wait(out_, bytes.size());
}

void BareUsb::exchange(std::span<const std::uint8_t> request, std::span<std::uint8_t> reply) {
  submit(in_, UsbPrinter::kIn, reply.data(), reply.size());
  submit(out_, UsbPrinter::kOut, request.data(), request.size());
  wait(out_, request.size());
  wait(in_, UsbPrinter::kReply.size());
}

void BareUsb::submit(Flight& flight, std::uint8_t endpoint, const std::uint8_t* bytes, std::size_t size) {
  const auto onEnd = [](libusb_transfer* transfer) { *static_cast<int*>(transfer->user_data) = 1; };
  flight.isOver = 0;
  libusb_fill_bulk_transfer(flight.transfer.get(), device_.get(), endpoint, const_cast<std::uint8_t*>(bytes),
                            static_cast<int>(size), onEnd, &flight.isOver, 0);
  check(libusb_submit_transfer(flight.transfer.get()), "libusb_submit_transfer");
}

void BareUsb::wait(Flight& flight, std::size_t size) {
  while (flight.isOver == 0) libusb_handle_events_completed(context_.get(), &flight.isOver);
  const libusb_transfer& transfer = *flight.transfer;
  if (transfer.status != LIBUSB_TRANSFER_COMPLETED || transfer.actual_length != static_cast<int>(size))
    throw std::runtime_error("a transfer did not go all the way");
}

}  // namespace qvn::bench
