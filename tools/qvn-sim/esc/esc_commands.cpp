#include "esc/esc_commands.h"

#include <algorithm>

#include "base/little_endian.h"

namespace sim::esc {

const CommandEntry& entryOf(ByteView header) {
  return *std::find_if(kCommands.begin(), kCommands.end() - 1, [header](const CommandEntry& entry) {
    return header.size() >= entry.recognisedBy &&
           std::equal(entry.header.begin(),
                      entry.header.begin() + static_cast<std::ptrdiff_t>(entry.recognisedBy), header.begin());
  });
}

bool isNamed(std::string_view name) {
  return std::any_of(kCommands.begin(), kCommands.end(),
                     [name](const CommandEntry& entry) { return entry.name == name; });
}

std::string_view nameOf(Command command) {
  return std::find_if(kCommands.begin(), kCommands.end(),
                      [command](const CommandEntry& entry) { return entry.command == command; })
      ->name;
}

Bytes makeStatus(Status status, std::uint8_t detail) {
  return {kEscape, 'S', 'S', static_cast<std::uint8_t>(status), detail, 0, 0, 0};
}

Bytes makeReply(const ReplyKind& kind, ByteView payload) {
  Bytes reply = makeHeader(kind.letters);
  writeLittle16(reply.data() + kind.payloadLengthAt, payload.size());
  reply.insert(reply.end(), payload.begin(), payload.end());
  return reply;
}

Bytes makeReply(const ReplyKind& kind, std::string_view text) {
  return makeReply(kind, Bytes(text.begin(), text.end()));
}

void writeScanDataHeader(std::uint8_t* to, std::size_t promised, std::uint64_t page, std::uint64_t block) {
  std::copy(kScanData.letters.begin(), kScanData.letters.end(), to);
  writeLittle16(to + kScanData.payloadLengthAt, std::min(promised, kLongestPayload));
  to[kPageAt] = static_cast<std::uint8_t>(page & 0xFF);
  writeLittle16(to + kBlockAt, static_cast<std::size_t>(block));
}

Bytes makeHeader(ByteView letters) {
  Bytes header(letters.begin(), letters.end());
  header.resize(kHeaderLength);
  return header;
}

}  // namespace sim::esc
