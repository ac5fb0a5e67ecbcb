// What a device sends on its scan port: the commands are what it sent less what was skipped, however the
// network cuts the bytes into pieces and wherever it pauses.
#include "ipv4/streams/esc_stream.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "fuzz/check.h"

namespace {

using namespace qvn;
using Command = std::vector<std::uint8_t>;

// The same with all bytes at hand. What has begun waits at `at`, until it is given up.
struct Model {
  const std::vector<std::uint8_t>& sent;
  std::size_t at = 0;
  bool inStep = true;
  std::vector<Command> commands;

  void take(std::size_t end) {
    while (at < end) {
      const esc::Bytes rest(sent.data() + at, end - at);
      if (rest[0] != 0x1B) {
        skip(1);
      } else if (rest.size() < 8) {
        return;
      } else if (!inStep && esc::find(rest) == nullptr) {
        skip(1);
      } else {
        const std::size_t length = esc::commandLength(rest);
        if (rest.size() < length) return;
        commands.emplace_back(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(length));
        at += length;
        inStep = true;
      }
    }
  }

  void skip(std::size_t count) {
    at += count;
    inStep = false;
  }
};

void take(ipv4::EscStream& stream, std::vector<Command>& commands) {
  while (const auto command = stream.next()) {
    QVN_FUZZ_CHECK(command->size() == esc::commandLength(*command));
    commands.emplace_back(command->begin(), command->end());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  struct Cut {
    std::size_t length;
    bool pauses;
  };
  std::vector<Cut> cuts;
  for (int i = input.ConsumeIntegralInRange(0, 8); i > 0; --i) {
    cuts.push_back({input.ConsumeIntegralInRange<std::size_t>(0, 64), input.ConsumeBool()});
  }
  const auto sent = input.ConsumeRemainingBytes<std::uint8_t>();
  cuts.push_back({sent.size(), true});

  ipv4::EscStream stream;
  std::vector<Command> commands;
  Model model{.sent = sent};
  std::size_t received = 0;
  for (const Cut& cut : cuts) {
    const std::size_t length = std::min(cut.length, sent.size() - received);
    const auto room = stream.room();
    QVN_FUZZ_CHECK(room.size() >= length);
    std::copy_n(sent.begin() + static_cast<std::ptrdiff_t>(received), length, room.begin());
    stream.add(length);
    received += length;
    take(stream, commands);
    model.take(received);
    QVN_FUZZ_CHECK(stream.isPartial() == (model.at < received));
    // Giving up comes to an end, whatever is left.
    for (std::size_t steps = 0; cut.pauses && stream.isPartial(); ++steps) {
      QVN_FUZZ_CHECK(steps <= sent.size());
      stream.giveUpPartial();
      take(stream, commands);
      model.skip(std::min<std::size_t>(8, received - model.at));
      model.take(received);
    }
    QVN_FUZZ_CHECK(commands == model.commands);
  }
  return 0;
}
