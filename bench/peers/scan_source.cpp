#include "peers/scan_source.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace qvn::bench {
namespace {

constexpr std::size_t kHeader = 8;
// Sent at once; small enough for the processor's caches, as what a scanner has just read is.
constexpr std::uint64_t kBlocksAtOnce = 8;

std::vector<std::uint8_t> makeBlocks(std::uint64_t count, std::uint64_t payload) {
  const std::uint64_t size = kHeader + payload;
  std::vector<std::uint8_t> blocks(count * size, 0x5A);
  for (std::uint64_t at = 0; at < blocks.size(); at += size) {
    const std::array<std::uint8_t, kHeader> header = {
        0x1B, 's', 'd', static_cast<std::uint8_t>(payload), static_cast<std::uint8_t>(payload >> 8), 1};
    std::copy(header.begin(), header.end(), blocks.begin() + static_cast<std::ptrdiff_t>(at));
  }
  return blocks;
}

class Page {
 public:
  void send(int connection) const {
    for (std::uint64_t left = ScanSource::kBlocks - 1; left > 0;) {
      const std::uint64_t count = std::min(left, kBlocksAtOnce);
      sendAll(connection, blocks_.data(), count * (kHeader + ScanSource::kPayload));
      left -= count;
    }
    sendAll(connection, last_.data(), last_.size());
    sendAll(connection, ScanSource::kStatus.data(), ScanSource::kStatus.size());
  }

 private:
  const std::vector<std::uint8_t> blocks_ = makeBlocks(kBlocksAtOnce, ScanSource::kPayload);
  const std::vector<std::uint8_t> last_ =
      makeBlocks(1, ScanSource::kPageSize - (ScanSource::kBlocks - 1) * ScanSource::kPayload);
};

void serve(int listener, int control) {
  const Page page;
  const auto answer = [&page](int connection) {
    std::array<std::uint8_t, 8> command{};
    if (recv(connection, command.data(), command.size(), MSG_WAITALL) != command.size()) return false;
    if (command == ScanSource::kGo) {
      page.send(connection);
    } else {
      sendAll(connection, ScanSource::kStatus.data(), ScanSource::kStatus.size());
    }
    return true;
  };
  serveConnections(
      listener, control, [](const std::vector<int>&) { return false; }, answer);
}

}  // namespace

ScanSource::ScanSource() : peer_(serve) {}

}  // namespace qvn::bench
