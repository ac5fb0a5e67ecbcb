// qvn npa: one NPA packet to a printer and its reply.
#include <memory>

#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "verbs/commands.h"
#include "verbs/raw_exchange.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

// An NPA packet says its length, less 3, in 16 bits.
constexpr std::uint32_t kLargestPacket = 0xFFFF + 3;

void exchange(const RawExchangeOptions& options) {
  const std::string request = parseRequest(options.hex, "A5 00 03 50 01 00");
  const Session session;
  const Device printer = selectPrinter(session, options.device);
  openDevice(session, printer);
  std::string reply(kLargestPacket, '\0');
  std::uint32_t length = 0;
  const std::uint32_t result = QvnExchangeNpaPrinter(
      session.client(), printer.handle, reinterpret_cast<const std::uint8_t*>(request.data()),
      static_cast<std::uint32_t>(request.size()), reinterpret_cast<std::uint8_t*>(reply.data()),
      kLargestPacket, &length);
  QvnClosePrinter(session.client(), printer.handle);
  if (result == QRN_ERROR_INVALID_FUNCTION)
    throw Failure(withCode(printer.text() + " takes no NPA packets", result));
  requireOf(session, printer, result, "the exchange with " + printer.text() + " failed");
  reply.resize(length);
  printReply(request, reply, options.json);
}

}  // namespace

void addNpaCommand(Verb& root) {
  const auto options = std::make_shared<RawExchangeOptions>();
  Verb verb = root.addVerb("npa", "Send an NPA packet (IEEE 1284.1) and print the reply");
  verb.addOption("HEX", options->hex, "The packet, two hexadecimal digits per byte").required();
  verb.addDevice(options->device, "printer");
  verb.addJson(options->json);
  verb.footer(
      "Packets that start or end jobs or register for alerts are refused: the library sends those.\n\n"
      "Examples:\n"
      "  qvn npa A5 00 03 50 01 00\n"
      "  qvn npa A5000550E08100FF -d 40001 --json");
  verb.callback([options] { exchange(*options); });
}

}  // namespace qvn::cli
