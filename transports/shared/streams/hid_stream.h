// The frames in the byte stream of a device's HID port: a type, the number of bytes that follow as 16 bits,
// little-endian, and those bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "shared/streams/receive_buffer.h"

namespace qvn::shared {

inline constexpr std::size_t kHidFrameHeader = 3;  // type and length

// Of content that is not longer than 16 bits say.
std::array<std::uint8_t, kHidFrameHeader> hidFrameHeader(std::uint8_t type, std::size_t length);

struct HidFrame {
  std::uint8_t type;
  std::span<const std::uint8_t> content;  // in the buffer
};

inline constexpr std::uint8_t kHidReport = 1;
inline constexpr std::uint8_t kHidEvent = 2;

class HidStream : public ReceiveBuffer {
 public:
  using Item = HidFrame;

  // The next whole frame, of whatever type.
  std::optional<HidFrame> next();

  // Takes all of the frame that has begun for garbage: what comes after a pause begins a new one.
  void giveUpPartial() { drop(bytes().size()); }
};

struct HidEvent {
  std::uint32_t id;
  std::uint32_t category;
};

// Nothing when the frame's content is none.
std::optional<HidEvent> parseHidEvent(std::span<const std::uint8_t> content);

}  // namespace qvn::shared
