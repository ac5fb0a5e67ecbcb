// The families of scanners that can be scanned with.
#pragma once

#include <memory>
#include <string_view>

#include "shared/scan/scanner.h"

namespace qvn::scan {

// The family is the value of a scanner's attribute "Device".
bool isKnownFamily(std::string_view family);

// Opens the scanner, of whatever family it is. Throws Error.
std::unique_ptr<Scanner> openScanner(std::uint32_t handle,
                                     std::chrono::milliseconds patience = Scanner::kPatience);

}  // namespace qvn::scan
