// What the device answers, checked: bytes that are no such answer throw Error.
#pragma once

#include <cstdint>
#include <string>

#include "shared/scan/bytes.h"

namespace qvn::scan {

// Whether the command is a status (SS), which also ends a page.
bool isStatus(Bytes command);

// Throws what a status other than "good" means; `what` is what was asked for.
void requireGood(Bytes status, const std::string& what);

// The text of a version reply (sv).
std::string versionText(Bytes reply);

// One piece of a page (sd).
struct DataBlock {
  std::uint8_t page;     // the page's number, low byte
  std::uint16_t number;  // the block's within the page, from 0 on, starting again at 65536
  Bytes payload;
};
DataBlock dataBlock(Bytes command);

}  // namespace qvn::scan
