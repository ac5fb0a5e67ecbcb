// CpdPrinterAlert: an alert that the library itself acts on.
#pragma once

#include <cstdint>
#include <span>

#include "qvn/transport/data.h"

namespace qvn {

class CpdPrinterAlert {
 public:
  // Throws Win32Exception with code 87 when the data is none of the three.
  explicit CpdPrinterAlert(const Data& data);

  static bool isAny(const Data& data);
  static bool isPowerOnReset(const Data& data);
  static bool isStatus(const Data& data);
  static bool isCancelPrintAcknowledge(const Data& data);

  // What a status alert carries: the new content of the cache's entries 17 and 18.
  std::span<const std::uint8_t> entry17() const;
  std::span<const std::uint8_t> entry18() const;

 private:
  Data data_;
};

}  // namespace qvn
