#include "command_interpreter.h"

#include <limits>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "base/bytes.h"
#include "documents/bpd_blocks.h"
#include "hid/button_panel.h"

namespace sim {
namespace {

constexpr std::uint32_t kAnyNumber = std::numeric_limits<std::uint32_t>::max();

Bytes hexOrThrow(const std::string& text) {
  auto bytes = fromHex(text);
  if (!bytes || bytes->empty()) throw std::invalid_argument("expected pairs of hexadecimal digits");
  return std::move(*bytes);
}

// The two sides of the first blank.
std::pair<std::string_view, std::string> splitAtBlank(std::string_view text) {
  const std::size_t blank = text.find(' ');
  return {text.substr(0, blank),
          std::string(blank == std::string_view::npos ? std::string_view() : text.substr(blank + 1))};
}

}  // namespace

std::string CommandInterpreter::run(std::string_view line) {
  device_.usbip.readArrived();  // what hosts have asked for before counts
  const auto [command, argument] = splitAtBlank(line);
  if (command == "help") return kCommandHelp;
  if (command == "quit") {
    device_.loop.stop();
  } else if (command == "fault") {
    device_.faults.add(argument);
  } else if (command == "clear-faults") {
    device_.faults.clear();
  } else if (!runPrinterCommand(command, argument) && !runScannerCommand(command, argument) &&
             !runUsbCommand(command)) {
    throw std::invalid_argument("unknown command; \"help\" tells them");
  }
  return {};
}

bool CommandInterpreter::runPrinterCommand(std::string_view command, const std::string& argument) {
  const auto needBidi = [this] {
    if (device_.bidi.port() == 0) throw std::invalid_argument("this device has no bidi port");
  };
  if (command == "alert") {
    needBidi();
    device_.bidi.alert(hexOrThrow(argument));
  } else if (command == "send") {
    needBidi();
    device_.bidi.sendToAll(hexOrThrow(argument));
  } else if (command == "status") {
    needBidi();
    const auto [busy, status] = splitAtBlank(argument);
    const auto busyNumber = static_cast<std::uint8_t>(parseNumber(busy, 0xFF));
    const auto statusNumber = static_cast<std::uint16_t>(status.empty() ? 0 : parseNumber(status, 0xFFFF));
    device_.bidi.alert(device_.printer.setStatus(busyNumber, statusNumber));
  } else if (command == "power-on-reset") {
    device_.scanner.reset();
    device_.bidi.alert(device_.printer.reset());
  } else {
    return false;
  }
  return true;
}

bool CommandInterpreter::runScannerCommand(std::string_view command, const std::string& argument) {
  const auto needPanel = [this] {
    if (device_.hid.port() == 0) throw std::invalid_argument("this device has no buttons");
  };
  if (command == "button") {
    needPanel();
    const std::uint32_t button = parseNumber(argument, 0xFF);
    if (button == 0) throw std::invalid_argument("buttons have the numbers 1 to 255");
    device_.hid.sendReport(panel::buttonReport(static_cast<std::uint8_t>(button)));
    device_.hid.sendReport(panel::buttonReport(0));
  } else if (command == "report") {
    needPanel();
    device_.hid.sendReport(hexOrThrow(argument));
  } else if (command == "reports") {
    needPanel();
    device_.hid.sendNumberedReports(parseNumber(argument, kAnyNumber));
  } else if (command == "event") {
    needPanel();
    const auto [id, category] = splitAtBlank(argument);
    device_.hid.sendEvent(panel::event(parseNumber(id, kAnyNumber), category.empty()
                                                                        ? panel::kEventCategory
                                                                        : parseNumber(category, kAnyNumber)));
  } else if (command == "load") {
    if (!device_.hasScanner) throw std::invalid_argument("this device has no feeder");
    device_.engine.load(parseNumber(argument, kAnyNumber));
  } else if (command == "block") {
    if (device_.objects.port() == 0) throw std::invalid_argument("this device sends no blocks");
    const Bytes payload = hexOrThrow(argument);
    if (payload.size() > bpd::kLongestPayload) throw std::invalid_argument("too long for a block");
    device_.objects.sendToAll(payload);
  } else {
    return false;
  }
  return true;
}

bool CommandInterpreter::runUsbCommand(std::string_view command) {
  if (command != "unplug" && command != "plug") return false;
  if (device_.usbip.port() == 0) throw std::invalid_argument("this device has no USB side");
  if (command == "plug") {
    device_.usb.plug();
  } else {
    device_.usb.unplug();
  }
  return true;
}

std::uint32_t parseNumber(std::string_view text, std::uint32_t largest) {
  std::istringstream in{std::string(text)};
  in.unsetf(std::ios::basefield);  // 0x4000 as well
  std::int64_t number = -1;
  in >> number;
  if (!in || !(in >> std::ws).eof() || number < 0 || number > largest) {
    throw std::invalid_argument("expected a number from 0 to " + std::to_string(largest));
  }
  return static_cast<std::uint32_t>(number);
}

}  // namespace sim
