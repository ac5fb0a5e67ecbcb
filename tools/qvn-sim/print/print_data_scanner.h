// Finds the end of each job in the stream of the print port.
#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "base/bytes.h"

namespace sim {

// The end-of-job marker. It may lie anywhere in what is received, also split; it is not part of the job.
inline constexpr std::array<std::uint8_t, 8> kEndOfJobMarker = {0x1B, 0x2A, 0x82, 0x00,
                                                                0x00, 0x00, 0x00, 0xAC};

class PrintDataScanner {
 public:
  // `onData` gets the data of a job in pieces, `onEnd` is called at each marker.
  PrintDataScanner(std::function<void(ByteView)> onData, std::function<void()> onEnd);

  void add(ByteView bytes);

  // The stream has ended: what could have become a marker is data after all.
  void finish();

 private:
  std::function<void(ByteView)> onData_;
  std::function<void()> onEnd_;
  Bytes heldBack_;  // the start of a marker at the end of what was received
};

}  // namespace sim
