// The library as it is installed on a machine: a registry of its own, the IPv4 transport, stored printers.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "home.h"

namespace qvn::bench {

class Installation {
 public:
  // Makes the registry in a new directory, initialises the library and adds the transport.
  Installation();
  ~Installation();
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;

  std::uint32_t client() const { return client_; }
  const std::filesystem::path& home() const { return home_.path(); }

  // A value below "Settings\".
  void set(const std::string& name, std::uint32_t value) const;

  // Stores a printer that is reached at these loopback ports.
  void storePrinter(std::uint32_t handle, std::uint16_t printPort, std::uint16_t bidiPort) const;
  // Stores a scanner or a HID that is reached at that loopback port.
  void storeScanner(std::uint32_t handle, std::uint16_t scanPort) const;
  void storeHid(std::uint32_t handle, std::uint16_t hidPort) const;
  void storeBpdScanner(std::uint32_t handle, std::uint16_t scanPort) const;
  static std::string bpdScannerText(std::uint32_t handle, std::uint16_t scanPort);
  // Stores printers that are never opened, with attribute texts of that many bytes and handles from `first`
  // on.
  void storePrinters(std::uint32_t first, std::uint32_t count, std::size_t textSize) const;
  void removePrinters(std::uint32_t first, std::uint32_t count) const;

 private:
  const Home home_;
  std::uint32_t client_ = 0;
};

}  // namespace qvn::bench
