// qvn esc: one ESC command to a scanner and its reply.
#include <memory>

#include "qvn/transport/attributes.h"
#include "shared/client/devices.h"
#include "shared/client/failure.h"
#include "shared/scan/esc_requests.h"
#include "verbs/commands.h"
#include "verbs/raw_exchange.h"
#include "verbs/verb.h"

namespace qvn::cli {

namespace {

void exchange(const RawExchangeOptions& options) {
  const std::string request = parseRequest(options.hex, "1B 53 56 00 00 00 00 00");
  const Session session;
  const Device scanner = selectNamed(session, kindNamed("scanner"), options.device);
  openDevice(session, scanner);
  std::string reply(scan::kLongestCommand, '\0');
  std::uint32_t length = 0;
  const std::uint32_t result = QvnExchangeDataScanner(
      session.client(), scanner.handle, reinterpret_cast<const std::uint8_t*>(request.data()),
      static_cast<std::uint32_t>(request.size()), reinterpret_cast<std::uint8_t*>(reply.data()),
      static_cast<std::uint32_t>(reply.size()), &length);
  QvnCloseScanner(session.client(), scanner.handle);
  if (result == QRN_ERROR_INVALID_FUNCTION &&
      readText(session, scanner, attribute::kDevice) == "BpdScanner") {
    throw Failure(withCode(scanner.text() + " is a Bpd scanner, which takes no ESC commands", result));
  }
  requireOf(session, scanner, result, "the exchange with " + scanner.text() + " failed");
  reply.resize(length);
  printReply(request, reply, options.json);
}

}  // namespace

void addEscCommand(Verb& root) {
  const auto options = std::make_shared<RawExchangeOptions>();
  Verb verb = root.addVerb("esc", "Send an ESC command to a scanner and print the reply");
  verb.addOption("HEX", options->hex, "The command with its 8-byte header, two hexadecimal digits per byte")
      .required();
  verb.addDevice(options->device, "scanner");
  verb.addJson(options->json);
  verb.footer(
      "A command that has no reply prints an empty line. 'qvn scan' takes pages.\n\n"
      "Examples:\n"
      "  qvn esc 1B 53 56 00 00 00 00 00\n"
      "  qvn esc 1B53460000000000 -d 40401 --json");
  verb.callback([options] { exchange(*options); });
}

}  // namespace qvn::cli
