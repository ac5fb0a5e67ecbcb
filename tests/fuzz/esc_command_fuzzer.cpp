// Bytes of any length as an ESC command: what class it is, what answers it, and how it is put together.
#include <fuzzer/FuzzedDataProvider.h>

#include <vector>

#include "fuzz/check.h"
#include "scanner/esc/esc_command_factory.h"

using qvn::Data;

namespace {

Data toData(const std::vector<std::uint8_t>& bytes) {
  return {bytes.data(), static_cast<std::uint32_t>(bytes.size())};
}

qvn::esc::Bytes view(const Data& data) { return {data.getBuffer(), data.getLength()}; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  const Data request =
      toData(input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 64)));
  const auto command = qvn::EscCommandFactory::getInstance().makeCommand(request);
  const bool isNull = command->getName() == "NullEscCommand";
  QVN_FUZZ_CHECK(isNull || command->isA(request));
  QVN_FUZZ_CHECK(isNull || command->equals(request));
  QVN_FUZZ_CHECK(isNull == (request.getLength() < 8 || request.getBuffer()[0] != 0x1B));

  // The transports' view of the same bytes.
  QVN_FUZZ_CHECK(command->expectsResponse() == qvn::esc::expectsReply(view(request)));
  const Data answer =
      toData(input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 64)));
  QVN_FUZZ_CHECK((command->expectsResponse() && command->isResponse(answer)) ==
                 qvn::esc::isReply(view(request), view(answer)));
  if (!isNull) {
    QVN_FUZZ_CHECK(command->getHeaderLength() + command->getPayloadLength() ==
                   qvn::esc::commandLength(view(request)));
  }

  const std::uint32_t whole = command->getHeaderLength() + command->getPayloadLength();
  while (input.remaining_bytes() > 0) {
    Data piece = toData(input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(1, 64)));
    const std::uint32_t before = command->getLength();
    if (!command->takeFrom(piece)) break;
    QVN_FUZZ_CHECK(piece.getCount() == command->getLength() - before);
    QVN_FUZZ_CHECK(command->getLength() <= whole);
  }
  return 0;
}
