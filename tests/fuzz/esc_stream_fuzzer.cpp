// What a device sends on its scan port: commands, and garbage between them.
#include "shared/streams/esc_stream.h"

#include <cstdint>

#include "fuzz/check.h"
#include "fuzz/pieces.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  qvn::fuzz::findHoweverCut<qvn::shared::EscStream>({bytes, size}, [](qvn::esc::Bytes command) {
    QVN_FUZZ_CHECK(command.front() == 0x1B && command.size() == qvn::esc::commandLength(command));
    return qvn::fuzz::Bytes(command.begin(), command.end());
  });
  return 0;
}
