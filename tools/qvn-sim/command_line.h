// What the command line says.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "fault_targets.h"
#include "faults/fault_switches.h"
#include "print/printer.h"

namespace sim {

struct Options {
  Identity identity;
  std::string address = "127.0.0.1";
  std::uint16_t discoveryPort = 0;
  std::uint16_t printPort = 0;
  std::uint16_t bidiPort = 0;
  std::uint16_t scanPort = 0;
  std::uint16_t hidPort = 0;
  std::optional<std::uint16_t> usbPort;  // of USB/IP; nothing without
  bool plain = false;                    // no bidi port at all
  bool printerOnly = false;              // neither scanner nor HID
  std::filesystem::path jobs;
  bool discard = false;
  std::filesystem::path page;  // the picture on the glass; the test chart when empty
  std::uint32_t sheets = 0;    // in the feeder
  std::size_t blockSize = 32768;
  bool framesReplies = false;  // of a BpdPrinter's scanner
  std::filesystem::path scans;
  std::filesystem::path script;
  std::filesystem::path trace;
  std::chrono::milliseconds printTime{0};
  std::uint64_t cancelRun = 4096;
  bool events = false;
  bool quitAtEndOfInput = false;
  FaultSwitches faults{faultTargetNamed, {}};

  bool hasScanner() const { return !printerOnly && !plain; }
  FaultTargets faultTargets() const;
};

// Nothing when the process is to end with `exitCode` (help was asked for, or the arguments are wrong).
std::optional<Options> parseCommandLine(int argc, char** argv, int& exitCode);

}  // namespace sim
